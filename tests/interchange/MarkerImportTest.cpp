// Lists of markers in: what each format says, what is refused and where, and what becomes of a
// marker that the edit has already.
#include "interchange/MarkerImport.h"
#include "export/AssetMetadataCSVExporter.h"
#include "export/AssetMetadataJSONExporter.h"
#include "export/AssetMetadataSRTExporter.h"
#include "platform/embedded/EmbeddedProject.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"
#include "tests/support/Edits.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace {

using namespace cutroom;
using testing::HasSubstr;

class MarkerImport : public testing::Test {
protected:
    MarkerImport() {
        EXPECT_TRUE(project_
                        .open(folder_ / "film", CurrentProject::Access::readWrite,
                              CurrentProject::IfMissing::create)
                        .ok());
        for (const char* id : {"cue.take", "cue.duration", "cue.start_timecode", "cue.marker type"})
            EXPECT_TRUE(CurrentProject::addCustomAttribute(id, L"Own", DBFieldTypes::text).ok());
    }
    // A minute long, from 01:00:00:00.
    static EditPtr edit(const Kv::FrameRate& rate = Kv::FrameRate(25), bool drop = false) {
        const EditModifier edit = test::makeEdit(1, 0, rate, L"Reel");
        test::layPieces(edit, edit->getId(0), {{L"a", rate.nominal() * 60}});
        test::setStartTimecode(edit, drop ? "01:00:00;00" : "01:00:00:00", drop);
        return edit;
    }
    static Result<MarkerFile> read(std::string_view text, MarkerFormat format, const EditPtr& edit,
                                   MarkerClock clock = MarkerClock::timecode) {
        return readMarkers(text, "f", format, markerTarget(edit, clock));
    }
    // "time-end name|description colour {take}" of each, or the failure.
    static std::string summary(const Result<MarkerFile>& file) {
        if (!file)
            return file.status().text();
        std::string text;
        for (const MarkerRead& marker : file->markers) {
            const Cue& cue = marker.cue;
            text += toText(cue.getTime()) + '-' + (cue.hasEnd() ? toText(cue.getEndTime()) : "") +
                    ' ' + toUtf8(cue.getName()) + '|' + toUtf8(cue.getDescription()) +
                    (marker.saidColour ? format(" %06x", cue.getColour()) : "");
            const auto take = cue.getCustomMetadata("take");
            text += (take.empty() ? "" : " {" + toUtf8(take) + '}') + '\n';
        }
        for (const std::string& warning : file->warnings)
            text += "! " + warning + '\n';
        return text;
    }

    test::TempFolder folder_;
    EmbeddedHost host_{EmbeddedHost::repeatable()};
    EmbeddedProject project_{host_};
};

TEST_F(MarkerImport, ReadsWhatOtherProgramsWriteAndNamesTheLineOfWhatIsWrong) {
    struct Row {
        MarkerFormat format;
        const char* text;
        const char* found;
    };
    using enum MarkerFormat;
    const EditPtr reel = edit();
    for (const Row& row : {
             Row{csv,
                 "\xEF\xBB\xBFName,IN,colour,take\r\n\"a \"\"b\"\",\nc\",01:00:01:12,RED,7\r\n",
                 "1.48- a \"b\",\nc| ff0000 {7}\n"},
             {csv,
              "Marker Name\tDescription\tIn\tOut\tDuration\tMarker Type\n"
              "x\ty\t01:00:02:00\t01:00:02:00\t00:00:00:00\tComment\n",
              "2- x|y\n"},
             {csv, "timecode;Duration;who\n01:00:01:00;00:00:00:05;me\n\n",
              "1-1.2 |\n! columns that no marker has: who\n"},
             {csv, "in,colour\n01:00:01:00,mauve\n",
              "1- |\n! line 2: \"mauve\" is no known colour\n"},
             {csv, "name,out\n", "f:1: no column is called \"in\""},
             {csv, "in\n", "f: holds no marker"},
             {csv, "in,out\n01:00:02:00,01:00:01:00\n", "f:2: the marker would end (01:00:01:00)"},
             {csv, "in\n01:00:01:00\n01:00:01:25\n", "f:3: \"01:00:01:25\" is no timecode"},
             {csv, "in\n01:00:01:00,x\n", "f:2: more cells than columns"},
             {csv, "name,in\n\"a\nb\",00:59:59:24\n", "f:2: 00:59:59:24 lies before the edit"},
             {csv, "in\n\"01:00:01:00\n", "f:2: a quote is never closed"},
             {csv, "in\n\"01\"x\n", "f:2: text behind a closing quote"},
             {csv, "in\n10:00:00:00\n", "f:2: no marker of it lies inside the edit"},
             {csv, "in\n\xFF\n", "f:2: not UTF-8 text"},
             {json, R"([{"name": "a", "in": "01:00:01:00", "out": "", "colour": "blue"},
                        {"in": "01:00:02:00", "end_timecode": "01:00:03:00", "x": 1},
                        {"in": "01:00:04:00", "end_timecode": null, "name": null}])",
              "1- a| 0000ff\n2-3 |\n4- |\n"},
             {json, "[\n{\"in\": \"01:00:01:00\",\n\"colour\": \"mauve\"}]",
              "1- |\n! line 2: \"mauve\" is no known colour\n"},
             {json, "[\n{\"in\": \"10:00:00:00\"}]", "f:2: no marker of it lies inside the edit"},
             {json, R"({"markers": [{"in": "01:00:01:00"}]})", "1- |\n"},
             {json,
              "{\"A\": [{\"name\": \"x\", \"markers\": []},\n{\"name\": \"Reel\",\n"
              "\"markers\": [{\"in\": \"01:00:01:00\"},\n {\"in\": \"1\"}]}]}",
              "f:4: \"1\" is no timecode"},
             {json, R"({"A": [{"markers": []}, {"markers": []}]})", "f: holds markers of 2 assets"},
             {json, "{\"markers\": [\n{\"in\": 5}]}", "f:2: \"in\" is not text"},
             {json, "{}", "f:1: holds no markers"},
             {json, "{", "f:1: "},
             {srt, "1\n01:00:01,480 --> 01:00:02,000\nfirst\nsecond\n", "1.48-2 first second|\n"},
             {srt, "1\n00:00:01,000 --> 00:00:02,000\nx\n", "f:2: 00:00:01:00 lies before"},
             {edl, "TITLE: x\n* LOC: 01:00:01:12 RED   note it\n*LOC: 01:00:02:00 bare\n",
              "1.48- |note it ff0000\n2- |bare\n"},
             {edl,
              "001  001 V C 01:00:05:00 01:00:05:01 01:00:05:00 01:00:05:01\n"
              " note |C:ResolveColorBlue |M:name |D:25\n",
              "5-6 name|note 0000ff\n"},
             {edl, "TITLE: x\n* LOC: 1:2 RED\n", "f:2: LOC without a timecode"},
             {edl, "TITLE: x\n", "f: holds no marker"},
         })
        EXPECT_THAT(summary(read(row.text, row.format, reel)), HasSubstr(row.found)) << row.text;
}

TEST_F(MarkerImport, CountsAsTheEditDoes) {
    EXPECT_EQ(summary(read("1\n00:00:01,000 --> 00:00:02,000\nx\n", MarkerFormat::srt, edit(),
                           MarkerClock::media)),
              "1-2 x|\n");
    const Kv::FrameRate ntsc(30000, 1001);
    EXPECT_EQ(summary(read("in\n01:00:10;00\n", MarkerFormat::csv, edit(ntsc, true))),
              "10.01- |\n");
    EXPECT_THAT(summary(read("in\n01:00:10;00\n", MarkerFormat::csv, edit(ntsc))),
                HasSubstr("f:2: 01:00:10;00 is drop frame; this edit counts without"));
    const EditPtr late = edit();
    test::setStartTimecode(late, "23:59:50:00");
    EXPECT_EQ(summary(read("in\n00:00:10:00\n", MarkerFormat::csv, late)), "20- |\n");
    const EditPtr film = edit(Kv::FrameRate(24000, 1001));
    test::setStartTimecode(film, "23:59:50:00");
    EXPECT_EQ(summary(read("in\n00:00:50:00\n", MarkerFormat::csv, film)), "60.06- |\n");
    const EditPtr early = edit(); // whose time 0 lies 10 s before the midnight that it counts from
    early->addLabel(EditLabel(kLabelVideoTimecode, {2, 1}, {early->getFrameRate()}, -250));
    EXPECT_EQ(summary(read("in\n23:59:59:00\n00:00:01:00\n", MarkerFormat::csv, early)),
              "9- |\n11- |\n");
}

TEST_F(MarkerImport, AMarkerOfTheSameTimeAndNameIsKeptReplacedOrJoined) {
    const EditPtr reel = edit();
    CueList cues;
    Cue sky(1.01, L"sky"); // inside frame 25, where its timecode is
    sky.setDescription(L"old");
    sky.setCustomMetadata("take", L"1");
    sky.setFlags(kCueVisible);
    cues.addCuePoint(sky);
    cues.addCuePoint(Cue(1.0, L"other"));
    const auto file = read("name,description,in,take\nsky,new,01:00:01:00,2\n"
                           "sky,more,01:00:01:00,\nfresh,,01:00:00:00,\n",
                           MarkerFormat::csv, reel);
    ASSERT_TRUE(file.ok());
    const MarkerPlaces places(reel, MarkerClock::timecode);
    using enum MarkerConflict;
    for (const auto& [conflict, planned] :
         {std::pair{keep, "2 0 1: fresh other sky:more sky:old1"},
          {replace, "2 1 0: fresh other sky:more sky:new2"},
          {both, "3 0 0: fresh other sky:new2 sky:more sky:old1"}}) {
        const MarkerPlan plan = planMarkers(cues, *file, places, conflict);
        std::string text = format("%zu %zu %zu:", plan.added, plan.replaced, plan.kept);
        for (const Cue& cue : plan.cues.cues())
            text += ' ' + toUtf8(cue.getName()) + (cue.getDescription().empty() ? "" : ":") +
                    toUtf8(cue.getDescription() + cue.getCustomMetadata("take"));
        EXPECT_EQ(text, planned);
        EXPECT_EQ(plan.cues.cues().back().getTime(), 1.01);
        EXPECT_EQ(plan.cues.cues().back().getFlags(), kCueVisible);
    }
    // An end in the frame of the start is never before it.
    const auto ended = read("name,in,out\nsky,01:00:01:00,01:00:01:00\n", MarkerFormat::csv, reel);
    EXPECT_EQ(planMarkers(cues, *ended, places, replace).cues.cues().back().getEndTime(), 1.01);
}

// Markers on frames, with texts of all kinds.
std::vector<Cue> anyMarkers(std::mt19937& random, const Kv::FrameRate& rate) {
    static const wchar_t* const kTexts[] = {L"",
                                            L" \n",
                                            L"Sky",
                                            L"a, \"b\"\r\nc",
                                            L" =x ",
                                            L"1 ---> ü😀<&>]]>",
                                            L"one two three four five six seven eight nine ten"};
    static constexpr std::uint32_t kColours[] = {0xFF0000, 0, 0xFFFFFF, 0x00FFFF};
    std::vector<Cue> cues;
    for (int i = 0; i < 12; ++i) {
        const auto at = static_cast<std::int64_t>(random() % 1400);
        Cue cue(toSeconds(rate.frameToFlicks(at)), kTexts[random() % 7]);
        if (random() % 3 != 0)
            cue.setEndTime(
                toSeconds(rate.frameToFlicks(at + 1 + static_cast<std::int64_t>(random() % 100))));
        cue.setDescription(kTexts[random() % 7]);
        cue.setColour(kColours[random() % 4]);
        for (const char* key : {"take", "duration", "start_timecode", "marker type"})
            cue.setCustomMetadata(key, kTexts[random() % 7]);
        cues.push_back(cue);
    }
    return cues;
}

TEST_F(MarkerImport, WhatTheExportersWriteComesInAgainUnchanged) {
    const std::pair<MarkerFormat, Kv::Ptr<AssetMetadataExporterBase>> formats[] = {
        {MarkerFormat::csv, Kv::Ptr<AssetMetadataExporterBase>(new AssetMetadataCSVExporter)},
        {MarkerFormat::json, Kv::Ptr<AssetMetadataExporterBase>(new AssetMetadataJSONExporter)},
        {MarkerFormat::srt, Kv::Ptr<AssetMetadataExporterBase>(new AssetMetadataSRTExporter)}};
    std::mt19937 random(7);
    int compared = 0;
    for (const auto& [rate, drop] : {std::pair{Kv::FrameRate(24), false},
                                     {Kv::FrameRate(25), false},
                                     {{24000, 1001}, false},
                                     {{30000, 1001}, false},
                                     {{30000, 1001}, true},
                                     {Kv::FrameRate(60), false}}) {
        const EditPtr reel = edit(rate, drop);
        const MarkerPlaces places(reel, MarkerClock::timecode);
        for (int round = 0; round < 20; ++round) {
            CueList cues;
            for (const Cue& cue : anyMarkers(random, rate))
                cues.addCuePoint(cue);
            for (const auto& [format, exporter] : formats) {
                const std::string text = exporter->getText(reel, cues.cues()).value();
                const auto file = read(text, format, reel);
                if (format == MarkerFormat::srt && text.empty())
                    continue;
                ASSERT_TRUE(file.ok()) << file.status().text() << '\n' << text;
                // Into an edit without markers, and among those that were written.
                const auto fresh = planMarkers({}, *file, places, MarkerConflict::keep);
                if (format != MarkerFormat::srt) {
                    EXPECT_EQ(exporter->getText(reel, fresh.cues.cues()).value(), text);
                }
                EXPECT_EQ(planMarkers(cues, *file, places, MarkerConflict::replace).cues, cues)
                    << text;
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 300);
}

} // namespace
