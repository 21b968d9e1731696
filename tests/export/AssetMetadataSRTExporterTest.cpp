// Markers and subtitles as SubRip, to the letter.
#include "export/AssetMetadataSRTExporter.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/files/TextFile.h"
#include "tests/support/Edits.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

namespace {

using testing::HasSubstr;

class SrtExport : public testing::Test {
protected:
    static EditPtr edit(const Kv::FrameRate& rate = Kv::FrameRate(25)) {
        return cutroom::test::makeEdit(1, 0, rate);
    }
    std::string path() const { return folder_.path() + "/out.srt"; }
    std::string written(bool done) const {
        return done ? TextFile::load(path()).value() : "(refused)";
    }
    std::string written(const EditPtr& from, const std::vector<Cue>& cues) const {
        return written(
            AssetMetadataSRTExporter().exportToFile(from, cues, cutroom::toWide(path())));
    }
    std::string written(const EditPtr& from, const IdStamp& track) const {
        return written(
            AssetMetadataSRTExporter::exportToFile(from, track, cutroom::toWide(path())));
    }
    static Cue range(double from, double to, std::wstring name, std::wstring text = {}) {
        Cue cue(TimeRange(from, to), std::move(name));
        cue.setDescription(std::move(text));
        return cue;
    }
    // One each second; those without lines are black.
    using Lines = std::vector<std::wstring>;
    static std::vector<CelSegment> subtitles(const std::vector<Lines>& all) {
        std::vector<CelSegment> segments(all.size());
        for (std::size_t i = 0; i < all.size(); ++i) {
            segments[i].start = cutroom::toFlicks(static_cast<double>(i));
            segments[i].end = segments[i].start + cutroom::kFlicksPerSecond;
            segments[i].material = all[i].empty() ? Cookie() : Cookie('T', 1);
            segments[i].detail.lines = all[i];
        }
        return segments;
    }

    cutroom::EmbeddedHost host_{cutroom::EmbeddedHost::repeatable()};
    cutroom::test::TempFolder folder_;
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
    EXPECT_EQ(written(from, std::vector<Cue>()), "(refused)");
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(SrtExport, TimesFollowTheEditsTimecodeAndOtherFormsStayAsTheyAre) {
    const struct {
        Kv::FrameRate rate;
        const char* start;
        bool drop;
        const char* first;
    } rows[] = {{Kv::FrameRate(25), "01:00:00:12", false, "01:00:01,480"},
                {Kv::FrameRate(24), "00:00:00:03", false, "00:00:01,125"},
                {Kv::FrameRate(30000, 1001), "01:00:00;12", true, "01:00:01,367"},
                {Kv::FrameRate(120), "00:00:00:000", false, "00:00:01:000"}};
    for (const auto& row : rows) {
        const EditPtr from = edit(row.rate);
        cutroom::test::setStartTimecode(from, row.start, row.drop);
        EXPECT_THAT(written(from, {range(1, 2, L"x")}), HasSubstr(row.first)) << row.start;
    }
}

TEST_F(SrtExport, ASubtitleTrackIsWrittenLineByLineInItsFont) {
    const EditPtr from = edit();
    const IdStamp track = from->addChan(kChanSubtitle);
    EXPECT_EQ(written(from, track), "(refused)") << "no texts";
    const auto texts = subtitles({{}, {L"Hello", L"", L"you"}, {}, {L"Bye"}});
    ASSERT_TRUE(from->get_edit_cel_p(track)->setSegments(texts).ok());
    const std::pair<unsigned, const char*> fonts[] = {
        {3, "1\n00:00:01,000 --> 00:00:02,000\n<i><b>Hello</i></b>\n<i><b>you</i></b>\n\n"
            "2\n00:00:03,000 --> 00:00:04,000\n<i><b>Bye</i></b>\n"},
        {2, "\n<i>Bye</i>\n"},
        {1, "\n<b>Bye</b>\n"}};
    for (const auto& [flags, text] : fonts) {
        SubtitleFont font;
        font.flags = flags;
        from->setSubtitleFont(track, font);
        EXPECT_THAT(written(from, track), testing::EndsWith(text));
    }
    EXPECT_EQ(written(from, from->getId(0)), "(refused)") << "no subtitle track";
}

TEST_F(SrtExport, SubtitlesAreThoseOfOneMomentWhileAnotherThreadChangesThem) {
    const EditPtr from = edit();
    const IdStamp track = from->addChan(kChanSubtitle);
    const auto few = subtitles(std::vector<Lines>(30, {L"few"}));
    const auto many = subtitles(std::vector<Lines>(400, {L"many"}));
    const Kv::Ptr<Cel> cel = from->get_edit_cel_p(track);
    ASSERT_TRUE(cel->setSegments(few).ok());
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (bool on = true; !done; on = !on)
            if (!cel->setSegments(on ? many : few).ok())
                return;
    });
    for (int i = 0; i < 1000; ++i) {
        const std::string text = *AssetMetadataSRTExporter::getText(
            from, track, AssetMetadataSRTExporter::Clock::timecode);
        const bool hasMany = text.find("many") != text.npos;
        EXPECT_NE(text.find("few") != text.npos, hasMany);
        EXPECT_EQ(text.find("\n400\n") != text.npos, hasMany);
    }
    done = true;
    writer.join();
}

} // namespace
