// Markers and subtitles as SubRip, to the letter.
#include "export/AssetMetadataSRTExporter.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/files/TextFile.h"
#include "platform/prefs/Configuration.h"
#include "tests/support/Edits.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

namespace {

using cutroom::test::TempFolder;

class SrtExport : public testing::Test {
protected:
    EditPtr edit(const Kv::FrameRate& rate = Kv::FrameRate(25)) {
        return cutroom::test::makeEdit(1, 0, rate);
    }
    std::string path() const { return folder_.path() + "/out.srt"; }
    std::string written(const EditPtr& from, const std::vector<Cue>& cues) {
        if (!AssetMetadataSRTExporter().exportToFile(from, cues, cutroom::toWide(path())))
            return "(refused)";
        return TextFile::load(path()).value();
    }
    static Cue range(double from, double to, std::wstring name, std::wstring text = {}) {
        Cue cue(TimeRange(from, to), std::move(name));
        cue.setDescription(std::move(text));
        return cue;
    }

    cutroom::EmbeddedHost host_{cutroom::EmbeddedHost::repeatable()};
    TempFolder folder_;
};

TEST_F(SrtExport, NumbersKeepTheirPlaceAndPointsAndEmptyOnesAreLeftOut) {
    const EditPtr from = edit();
    EXPECT_EQ(written(from, {range(1, 2, L"one"), Cue(3.0, L"point"), range(4, 5, L""),
                             range(6.48, 7, L"name", L"text"), range(8, 9, L"name", L" \n")}),
              "1\n00:00:01,000 --> 00:00:02,000\none\n\n"
              "4\n00:00:06,480 --> 00:00:07,000\ntext\n\n"
              "5\n00:00:08,000 --> 00:00:09,000\nname\n");
    EXPECT_EQ(written(from, {Cue(3.0, L"point")}), "");
    std::filesystem::remove(path());
    EXPECT_EQ(written(from, {}), "(refused)");
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(SrtExport, TimesFollowTheEditsTimecodeAndOtherFormsStayAsTheyAre) {
    struct Row {
        Kv::FrameRate rate;
        const char* start;
        bool drop;
        const char* first;
    };
    for (const Row& row : {Row{Kv::FrameRate(25), "01:00:00:12", false, "01:00:01,480"},
                           {Kv::FrameRate(24), "00:00:00:03", false, "00:00:01,125"},
                           {Kv::FrameRate(30000, 1001), "01:00:00;12", true, "01:00:01,367"},
                           {Kv::FrameRate(120), "00:00:00:000", false, "00:00:01:000"}}) {
        const EditPtr from = edit(row.rate);
        cutroom::test::setStartTimecode(from, row.start, row.drop);
        const std::string text = written(from, {range(1, 2, L"x")});
        EXPECT_THAT(text, testing::HasSubstr(row.first)) << row.start;
    }
}

TEST_F(SrtExport, WhatIsConfiguredIsReadOnce) {
    const EditPtr from = edit();
    cutroom::test::setStartTimecode(from, "10:00:00:00");
    auto& configuration = cutroom::Configuration::instance();
    for (const char* value : {"0", ""}) { // "" takes it away, which nothing sees any more
        configuration.set("convert_marker_timecodes", value);
        configuration.set("srt_split_length", value);
        EXPECT_EQ(written(from, {range(1, 2, L"1234567890 1234567890 1234567890 1234567890")}),
                  "1\n00:00:01,000 --> 00:00:02,000\n"
                  "1234567890 1234567890 1234567890 1234567890\n");
    }
}

TEST_F(SrtExport, TheMediaClockCountsFromTheFirstFrameInTrueSeconds) {
    const EditPtr from = edit(Kv::FrameRate(30000, 1001));
    cutroom::test::setStartTimecode(from, "01:00:00:00");
    const auto hour = 3600 * 1.001; // an hour of non-drop labels lasts 3.6 s longer
    const AssetMetadataSRTExporter exporter(AssetMetadataSRTExporter::Clock::media);
    ASSERT_TRUE(exporter.exportToFile(from, {range(0.5, hour, L"x")}, cutroom::toWide(path())));
    EXPECT_THAT(TextFile::load(path()).value(),
                testing::HasSubstr("00:00:00,500 --> 01:00:03,600"));
}

TEST_F(SrtExport, LongTextsBecomeTwoLinesAtTheFirstBlankPastTheMiddle) {
    struct Row {
        const wchar_t* text;
        const char* lines;
    };
    const EditPtr from = edit();
    for (const Row& row : {
             Row{L"exactly thirty-five characters long", "exactly thirty-five characters long\n"},
             {L"1234567890 1234567890 1234567890 12345678901234567",
              "1234567890 1234567890 1234567890\n12345678901234567\n"},
             {L"onewordthatisfarlongerthanthelimitofthirtyfive",
              "onewordthatisfarlongerthanthelimitofthirtyfive\n"},
             {L"two words aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",
              "two words aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\n"},
             {L"a line\n\nbreak", "a line break\n"},
         })
        EXPECT_EQ(written(from, {range(0, 1, row.text)}),
                  "1\n00:00:00,000 --> 00:00:01,000\n" + std::string(row.lines));
}

TEST_F(SrtExport, ASubtitleTrackIsWrittenLineByLineInItsFont) {
    const EditPtr from = edit();
    const IdStamp track = from->addChan(kChanSubtitle);
    EXPECT_FALSE(AssetMetadataSRTExporter::exportToFile(from, track, cutroom::toWide(path())));
    std::vector<CelSegment> segments(3);
    const auto at = [](int seconds) { return cutroom::toFlicks(seconds); };
    segments[0].start = at(1);
    segments[0].end = segments[1].start = at(2);
    segments[1].end = segments[2].start = at(3);
    segments[2].end = at(4);
    segments[0].material = segments[2].material = Cookie('T', 1);
    segments[0].detail.lines = {L"Hello", L"", L"you"};
    segments[2].detail.lines = {L"Bye"};
    ASSERT_TRUE(from->get_edit_cel_p(track)->setSegments(segments).ok());
    SubtitleFont font;
    font.flags = 3; // bold 1, italic 2
    from->setSubtitleFont(track, font);
    ASSERT_TRUE(AssetMetadataSRTExporter::exportToFile(from, track, cutroom::toWide(path())));
    EXPECT_EQ(TextFile::load(path()).value(),
              "1\n00:00:01,000 --> 00:00:02,000\n<i><b>Hello</i></b>\n<i><b>you</i></b>\n\n"
              "2\n00:00:03,000 --> 00:00:04,000\n<i><b>Bye</i></b>\n");
    font.flags = 2;
    from->setSubtitleFont(track, font);
    ASSERT_TRUE(AssetMetadataSRTExporter::exportToFile(from, track, cutroom::toWide(path())));
    EXPECT_THAT(TextFile::load(path()).value(), testing::HasSubstr("\n<i>Bye</i>\n"));
    EXPECT_FALSE(
        AssetMetadataSRTExporter::exportToFile(from, from->getId(0), cutroom::toWide(path())));
}

TEST_F(SrtExport, SubtitlesAreThoseOfOneMomentWhileAnotherThreadChangesThem) {
    const EditPtr from = edit();
    const IdStamp track = from->addChan(kChanSubtitle);
    const auto version = [](int count, const wchar_t* text) {
        std::vector<CelSegment> segments(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            segments[static_cast<std::size_t>(i)].start = cutroom::toFlicks(i);
            segments[static_cast<std::size_t>(i)].end = cutroom::toFlicks(i + 1);
            segments[static_cast<std::size_t>(i)].material = Cookie('T', 1);
            segments[static_cast<std::size_t>(i)].detail.lines = {text};
        }
        return segments;
    };
    const auto few = version(30, L"few"), many = version(400, L"many");
    const Kv::Ptr<Cel> cel = from->get_edit_cel_p(track);
    ASSERT_TRUE(cel->setSegments(few).ok());
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (bool on = true; !done; on = !on)
            if (!cel->setSegments(on ? many : few).ok())
                return;
    });
    for (int i = 0; i < 40; ++i) {
        ASSERT_TRUE(AssetMetadataSRTExporter::exportToFile(from, track, cutroom::toWide(path())));
        const std::string text = TextFile::load(path()).value();
        const bool hasFew = text.find("few") != text.npos, hasMany = text.find("many") != text.npos;
        EXPECT_NE(hasFew, hasMany);
        EXPECT_EQ(text.find("\n400\n") != text.npos, hasMany);
    }
    done = true;
    writer.join();
}

TEST_F(SrtExport, ColoursHaveNamesOnlyToTheBit) {
    Cue cue;
    for (const auto& [value, name] : {std::pair{0xFF0000U, "red"},
                                      {0x00FF00U, "green"},
                                      {0x0000FFU, "blue"},
                                      {0x00FFFFU, "cyan"},
                                      {0xFF00FFU, "magenta"},
                                      {0xFFFF00U, "yellow"},
                                      {0xFFFFFFU, "white"},
                                      {0x000000U, "black"},
                                      {0xFE0000U, ""}}) {
        cue.setColour(value);
        EXPECT_EQ(AssetMetadataExporterBase::getMarkerColour(cue), name);
    }
}

TEST_F(SrtExport, AFileThatCannotBeWrittenIsRefused) {
    for (const std::wstring& to :
         {std::wstring(L"/nonexistent/folder/out.srt"), cutroom::toWide(path()) + L'\xD800'})
        EXPECT_FALSE(AssetMetadataSRTExporter().exportToFile(edit(), {range(0, 1, L"x")}, to));
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

} // namespace
