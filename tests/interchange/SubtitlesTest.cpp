// SubRip in: what players take, and where it lands on an edit.
#include "interchange/SrtReader.h"
#include "interchange/SubtitleImport.h"
#include "platform/embedded/EmbeddedHost.h"
#include "tests/support/Edits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using cutroom::MarkerClock;
using cutroom::readSrt;
using cutroom::SrtFile;
using testing::ElementsAre;
using testing::HasSubstr;

// "start-end text/text" of each subtitle, times in milliseconds.
std::vector<std::wstring> summary(const SrtFile& file) {
    std::vector<std::wstring> found;
    for (const auto& cue : file.cues) {
        std::wstring text = std::to_wstring(cue.start / (cutroom::kFlicksPerSecond / 1000)) + L"-" +
                            std::to_wstring(cue.end / (cutroom::kFlicksPerSecond / 1000)) + L" ";
        for (const auto& line : cue.lines)
            text += (text.back() == L' ' ? L"" : L"/") + line;
        found.push_back(text);
    }
    return found;
}

TEST(SrtReader, TakesWhatPlayersTake) {
    struct Row {
        const char* name;
        std::string text;
        std::vector<std::wstring> cues;
        std::size_t warnings = 0;
    };
    const std::string first = "1\n00:00:01,000 --> 00:00:02,000\n";
    for (const Row& row : {
             Row{"plain",
                 "1\n00:00:01,000 --> 00:00:02,480\none\ntwo\n\n2\n00:00:03,000 --> "
                 "00:00:04,000\nthree",
                 {L"1000-2480 one/two", L"3000-4000 three"}},
             {"mark, CRLF, CR",
              "\xEF\xBB\xBF"
              "1\r\n0:00:01.5 --> 0:00:02.250\r\na\r\n\r\n"
              "00:00:05,000 --> 00:00:06,000\rb\r",
              {L"1500-2250 a", L"5000-6000 b"}},
             {"no empty line between",
              first + "a\n2\n00:00:02,000 --> 00:00:03,000\nb\n",
              {L"1000-2000 a", L"2000-3000 b"}},
             {"out of order, a number twice",
              "1\n00:00:05,000 --> 00:00:06,000\nb\n\n" + first + "a\n",
              {L"1000-2000 a", L"5000-6000 b"},
              1},
             {"numbers in the text", first + "1984\n", {L"1000-2000 1984"}},
             {"no text, no length",
              first + "\n2\n00:00:04,000 --> 00:00:04,000\nx\n\n3\n00:00:05,000 --> "
                      "00:00:06,000 X1:1\ny\n",
              {L"5000-6000 y"},
              2},
             {"an empty line in the text, an arrow in it, a number at the end",
              first + "a\n\nb --> c\n\n2\n00:00:03,000 --> 00:00:04,000\n\nd\n\n3\n",
              {L"1000-2000 a/b --> c", L"3000-4000 d"}},
             {"timecodes in place of times",
              first + "a\n\n2\n01:00:00;12 --> 01:00:02:00\nb\n\n3\n00:00:05,000 --> "
                      "00:00:06,000\nc\n",
              {L"1000-2000 a", L"5000-6000 c"},
              1},
             {"long hours", "100:00:00,000 --> 100:00:01,000\nx\n", {L"360000000-360001000 x"}},
         }) {
        const auto read = readSrt(row.text, "f.srt");
        ASSERT_TRUE(read) << row.name << ": " << read.status().text();
        EXPECT_EQ(summary(*read), row.cues) << row.name;
        EXPECT_EQ(read->warnings.size(), row.warnings) << row.name;
    }
}

TEST(SrtReader, RefusesWhatIsNoneAndNamesTheLine) {
    EXPECT_EQ(readSrt("1\n00:00:01,000 --> 00:00:02,000\nna\xEFve\n", "f.srt").status().line(), 3);
    for (const char* bad :
         {"", "hello\n", "1\n00:60:00,000 --> 00:61:00,000\nx\n",
          "1\n00:00:60,000 --> 00:01:01,000\nx\n", "1\n00:00:01;12 --> 00:00:02;00\nx\n", "-->\n"})
        EXPECT_THAT(readSrt(bad, "f.srt").status().text(), HasSubstr("f.srt: holds no subtitle"));
    EXPECT_THAT(readSrt("1\n00:00:02,000 --> 00:00:01,000\nx\n", "f.srt").status().text(),
                HasSubstr("line 2: a subtitle that does not end after its start"));
}

class SubtitleImport : public testing::Test {
protected:
    EditModifier edit(const char* start, bool dropFrame = false) {
        const Kv::FrameRate rate = dropFrame ? Kv::FrameRate(30000, 1001) : Kv::FrameRate(25);
        EditModifier made = cutroom::test::makeEdit(1, 0, rate);
        cutroom::test::layPieces(made, made->getId(0), {{L"clip", 1000}});
        cutroom::test::setStartTimecode(made, start, dropFrame);
        return made;
    }
    // Frames and texts of a channel's subtitles.
    static std::vector<std::wstring> laid(const EditPtr& from, const IdStamp& channel) {
        std::vector<std::wstring> found;
        const auto cel = from->get_edit_cel_p(channel);
        const auto rate = from->getFrameRate();
        for (std::uint32_t i = 0; i < cel->numSegments(); ++i)
            if (const auto segment = cel->getSegment(i); segment.material.valid())
                found.push_back(std::to_wstring(rate.flicksToFrameNearest(segment.start)) + L"-" +
                                std::to_wstring(rate.flicksToFrameNearest(segment.end)) + L" " +
                                segment.detail.lines.front());
        return found;
    }
    static SrtFile file(const std::string& text) { return readSrt(text, "f").value(); }

    cutroom::EmbeddedHost host_{cutroom::EmbeddedHost::repeatable()};
};

TEST_F(SubtitleImport, TimesCountFromTheFirstFrameOrAsTimecode) {
    const std::string media = "00:00:01,020 --> 00:00:02,000\na\n",
                      timecode = "01:00:10,480 --> 01:00:11,000\na\n";
    const EditModifier hour = edit("01:00:00:00"), drop = edit("00:00:50;00", true);
    for (const auto& [target, text, clock, expected] :
         {std::tuple{hour, media, MarkerClock::media, L"26-50 a"},
          {hour, timecode, MarkerClock::timecode, L"262-275 a"},
          {hour, "01:00:01,990 --> 01:00:03,000\na\n", MarkerClock::timecode, L"50-75 a"},
          {drop, "00:00:50,500 --> 00:00:51,000\na\n", MarkerClock::timecode, L"15-30 a"},
          {drop, "00:01:00,000 --> 00:01:01,000\na\n", MarkerClock::timecode, L"300-328 a"},
          {edit("23:59:59:00"), "00:00:01,000 --> 00:00:02,000\na\n", MarkerClock::timecode,
           L"50-75 a"}}) {
        const auto made = importSubtitles(target, file(text), L"s", clock);
        ASSERT_TRUE(made);
        EXPECT_THAT(laid(target, made->channel), ElementsAre(expected));
    }
    const EditModifier night = edit("23:59:59:00"); // the file has the second one first
    const auto both = importSubtitles(night,
                                      file("23:59:59,400 --> 00:00:00,400\na\n\n"
                                           "00:00:01,000 --> 00:00:02,000\nb\n"),
                                      L"s", MarkerClock::timecode);
    ASSERT_TRUE(both) << both.status().text();
    EXPECT_THAT(laid(night, both->channel), ElementsAre(L"10-35 a", L"50-75 b"));
    const auto outside = importSubtitles(hour, file(timecode), L"s", MarkerClock::media);
    EXPECT_THAT(outside.status().text(), HasSubstr("--clock"));
    EXPECT_EQ(hour->getNumChans(kChanSubtitle), 3);
    EXPECT_FALSE(importSubtitles({}, file(media), L"s", MarkerClock::media).ok());
}

TEST_F(SubtitleImport, OverlapsAreCutShortAndTagsRoundAllLinesBecomeTheFont) {
    const EditModifier programme = edit("00:00:00:00");
    const auto report = importSubtitles(
        programme,
        file("00:00:01,000 --> 00:00:03,000\n<i><b>a</b></i>\n\n00:00:02,000 --> 00:00:04,000\n"
             "<i><b>b</b></i>\n\n00:00:39,900 --> 00:00:50,000\n<i><b>c</b></i>\n\n"
             "00:00:41,000 --> 00:00:42,000\n<i><b>d</b></i>\n\n"
             "00:00:04,000 --> 00:00:04,010\n<i><b>e</b></i>\n"),
        L"titles", MarkerClock::media);
    ASSERT_TRUE(report);
    EXPECT_THAT(laid(programme, report->channel),
                ElementsAre(L"25-50 a", L"50-100 b", L"100-101 e", L"998-1000 c"));
    EXPECT_EQ(programme->getSubtitleFont(report->channel).flags, kFontBold | kFontItalic);
    EXPECT_THAT(report->warnings, ElementsAre("1 outside the edit, left out",
                                              "1 cut short where the next one begins"));
    EXPECT_EQ(report->count, 4U);
}

TEST_F(SubtitleImport, TagsThatAreNotRoundAllLinesStay) {
    const EditModifier programme = edit("00:00:00:00");
    for (const char* const line : {"words without tags", "<i>opened only", "closed only</i>",
                                   "<i></i>", "<b>a</b> and <i>b</i>"}) {
        const auto report = importSubtitles(
            programme, file(std::string("00:00:01,000 --> 00:00:02,000\n") + line + '\n'), L"s",
            MarkerClock::media);
        ASSERT_TRUE(report);
        EXPECT_THAT(laid(programme, report->channel),
                    ElementsAre(L"25-50 " + cutroom::toWide(line)));
        EXPECT_EQ(programme->getSubtitleFont(report->channel).flags, 0U);
    }
}

} // namespace
