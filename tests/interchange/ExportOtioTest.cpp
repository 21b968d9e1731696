// Edits as OTIO: what came in comes out, and what was changed since is told.
#include "interchange/Exporter.h"
#include "interchange/OtioReader.h"
#include "interchange/OtioWriter.h"
#include "tests/interchange/Corpus.h"
#include "tests/interchange/ImportFixture.h"
#include "tests/interchange/OtioText.h"
#include "tests/interchange/RandomEdit.h"
#include "tests/support/Edits.h"
#include "tests/support/Scale.h"

#include <gmock/gmock.h>

namespace {

using namespace cutroom;
using namespace cutroom::test;
using namespace otiotext;

std::string exported(const EditPtr& edit) {
    const auto file = exportOtio(edit);
    EXPECT_TRUE(file.ok()) << file.status().text();
    return file.ok() ? file->text : std::string();
}

class ExportOtioCorpus : public ImportFixture, public testing::WithParamInterface<std::string> {};

TEST_P(ExportOtioCorpus, WhatCameInComesOut) {
    const ImportReport report = import(corpus::folder() + GetParam());
    reopen();
    const std::string text = exported(EditPtr(report.edits.at(0).edit));
    EXPECT_EQ(exported(imported("again.otio", text)), text);
}

INSTANTIATE_TEST_SUITE_P(Files, ExportOtioCorpus, testing::ValuesIn(corpus::files("otio")),
                         [](const auto& file) { return corpus::testName(file.param); });

class ExportOtio : public ImportFixture {
protected:
    EditPtr reimported(const EditPtr& edit) { return imported("again.otio", exported(edit)); }
};

struct Change {
    const char* name;
    void (*make)(const EditPtr& edit, Cel& cel);
};

Flicks at24(std::int64_t frame) { return Kv::FrameRate(24).frameToFlicks(frame); }

void setFirst(Cel& cel, double speed, unsigned flags) {
    ChannelEvent event = cel.get_event(0);
    event.speed = speed;
    event.flags = static_cast<std::uint8_t>(event.flags | flags);
    EXPECT_TRUE(cel.setEvent(0, event).ok());
}

const Change kChanges[] = {
    {"nothing", [](const EditPtr&, Cel&) {}},
    {"name", [](const EditPtr& edit, Cel&) { edit->setName(L"Other \"name\""); }},
    {"split", [](const EditPtr&, Cel& cel) { EXPECT_TRUE(cel.split(at24(4)).ok()); }},
    {"trim", [](const EditPtr&, Cel& cel) { EXPECT_TRUE(cel.trim(1, at24(2)).ok()); }},
    {"lift",
     [](const EditPtr&, Cel& cel) {
         EXPECT_TRUE(cel.lift({0.25, 0.5}).ok());
     }},
    {"remove",
     [](const EditPtr&, Cel& cel) {
         EXPECT_TRUE(cel.remove({0, 0.25}).ok());
     }},
    {"open a gap", [](const EditPtr&, Cel& cel) { EXPECT_TRUE(cel.insertGap(0, at24(5)).ok()); }},
    {"speed", [](const EditPtr&, Cel& cel) { setFirst(cel, -2, 0); }},
    {"freeze", [](const EditPtr&, Cel& cel) { setFirst(cel, 0, kEventFreeze); }},
    {"disable", [](const EditPtr&, Cel& cel) { setFirst(cel, 2, kEventDisabled); }},
    {"markers",
     [](const EditPtr& edit, Cel&) {
         CueList cues = edit->getCues();
         Cue cue = cues.getCuePoint(0);
         cue.setTime(cue.getTime() + 1.0 / 24);
         cue.setColour(0x123456);
         cue.setCustomMetadata("ta\"ke", L"3 \u00e9");
         edit->changeCue(cue);
         edit->addCue(Cue(TimeRange(0.5, 0.75), L"new"));
     }},
    {"start", [](const EditPtr& edit, Cel&) { setStartTimecode(edit, "01:00:00:00"); }},
};

// Two tracks with handles, a transition, speed, markers placed by two habits, and all that the
// reader has no use for.
std::string richTimeline() {
    const std::string warp =
        object("LinearTimeWarp.1", "w",
               R"("effect_name":"x","metadata":{"k":[1,null]},"time_scalar":2.0)");
    const std::string first =
        clip("A", 100, 10,
             "\"effects\":[" + object("Blur.1", "b") + "," + warp +
                 "],\"metadata\":{\"n\":1e40,\"w\":[nan,-Inf,\"Inf\"]}," +
                 markers(object("Marker.2", "m", "\"marked_range\":" + range(3, 0)) + "," +
                         marker("n", 5, 2)));
    const std::string off = R"(,"enabled":false)";
    return timeline(
        track(first + "," + transition(2, 3) + "," + clip("B", 0, 20) + "," +
                  item("Gap.1", "", 0, 7) + "," + clip("C", 5, 6, {}, "25"),
              R"("color":"x","metadata":{"t":true})") +
            "," +
            object("Track.1", "S",
                   R"("kind":"Audio",)" + children(clip("D", 48000, 96000, {}, "48000"))) +
            "," + object("Track.1", "U", R"("kind":"Subtitles",)" + children(clip("E", 0, 9))) +
            "," +
            object("Track.1", "O",
                   R"("kind":"Data","enabled":false,)" +
                       children(clip("F", 0, 9, R"("enabled":false)"))),
        time(90000, "25"));
}

TEST_F(ExportOtio, ChangesAreToldAndTheRestStays) {
    for (const Change& change : kChanges) {
        SCOPED_TRACE(change.name);
        const EditModifier edit = imported("t.otio", richTimeline());
        change.make(edit, *celOf(edit, 0));
        const std::string text = exported(edit);
        EXPECT_EQ(contentsOf(reimported(edit)), contentsOf(edit));
        EXPECT_EQ(exported(edit), text);
        for (const char* const kept :
             {R"("OTIO_SCHEMA":"Blur.1")", R"({"n":1e40,"w":[NaN,-Infinity,"Inf"]})",
              R"({"t":true})", R"("color": "x")", R"("rate":48000)", R"("kind": "Subtitles")",
              R"("kind": "Data")"})
            EXPECT_THAT(text, testing::HasSubstr(kept));
    }
}

TEST_F(ExportOtio, RootsComeOutAsWhatTheyWere) {
    const std::string inner = clip("A", 5, 10, markers(marker("m", 6))) + "," + clip("B", 0, 4);
    for (const auto& [schema, root] : {std::pair("Track.1 ", track(inner, markers(marker("t", 2)))),
                                       {"Stack.1 ", object("Stack.1", "S", children(track(inner)))},
                                       {"Clip.2 ", clip("A", 5, 10)}}) {
        const Timeline out = read(exported(imported("t.otio", root)));
        EXPECT_EQ(out.source + " " + layout(out), schema + layout(read(root)));
    }
}

TEST(WriteOtio, FillsHolesAndSaysWhatDoesNotFit) {
    const std::string marked = clip("B", 0, 20, markers(marker("m", 4)));
    Timeline made = read(timeline(track(clip("A", 0, 10) + "," + transition(2, 3) + "," + marked)));
    std::vector<Item>& items = made.tracks[0].items;
    items[1].start -= at24(20);
    items[1].inOffset += at24(20);
    made.markers[0].start = at24(99);
    const OtioText said = writeOtio(made);
    EXPECT_EQ(layout(read(said.text)), "A 0+10 @0, t 0+13 @0, B 10+20 @0");
    EXPECT_THAT(said.warnings, testing::ElementsAre(testing::EndsWith("elsewhere: 1"),
                                                    testing::EndsWith("shortened: 1")));
    items.erase(items.begin() + 1);
    items[1].start += at24(5);
    EXPECT_EQ(layout(read(writeOtio(made).text)), "A 0+10 @0,  10+5 @0, B 15+20 @0");
    Timeline odd = read(timeline(track(
        clip("A", 0, 10,
             R"("effects":{"q":1},)" +
                 markers(object("Marker.2", "m", R"("metadata":"x","range":)" + range(3, 0)))))));
    odd.markers[0].fields.emplace_back("take", "3");
    EXPECT_EQ(layout(read(writeOtio(odd).text)), "A 0+10 @0");
    const std::string nothing =
        writeOtio(read(timeline(track(R"({"name":"N","source_range":)" + range(0, 4) + "}")))).text;
    EXPECT_EQ(writeOtio(read(nothing)).text, nothing);
}

TEST_F(ExportOtio, RandomEditsComeBack) {
    for (int round = 0; round < rounds(20, 400); ++round) {
        SCOPED_TRACE(round);
        RandomEdit random(round, 2, 2);
        const EditModifier& edit = random.edit();
        for (int i = random.below(6); i > 0; --i)
            edit->addCue(Cue(toSeconds(edit->getFrameRate().frameToFlicks(random.below(9))),
                             L"m" + std::to_wstring(i)));
        const EditPtr again = reimported(edit);
        EXPECT_EQ(contentsOf(again), contentsOf(edit));
        EXPECT_EQ(again->getDropFrame(), edit->getDropFrame());
        EXPECT_EQ(exported(again), exported(reimported(again)));
    }
}

// A marker of a nested timeline is written there only; one that was changed on the edit around it
// is written there.
TEST_F(ExportOtio, MarkersOfNestedThingsAreToldWhereTheyAre) {
    const EditModifier edit = imported(
        "t.otio",
        timeline(track(
            clip("A", 0, 10) + "," +
            object("Stack.1", "N",
                   markers(marker("s", 5)) + "," +
                       children(object("Track.1", "T",
                                       children(clip("B", 0, 20, markers(marker("m", 3))))))))));
    EXPECT_EQ(contentsOf(reimported(edit)), contentsOf(edit));
    ASSERT_TRUE(celOf(edit, 0)->trim(3, at24(-12)).ok()); // a part of it, up to its frame 8
    EXPECT_EQ(contentsOf(reimported(edit)), contentsOf(edit));
    Cue cue = edit->getCues().getCuePoint(0);
    cue.setTime(cue.getTime() + 1.0 / 24);
    edit->changeCue(cue);
    EXPECT_THAT(contentsOf(reimported(edit)), testing::HasSubstr("\n14- m/"));
}

TEST_F(ExportOtio, NestedInItselfIsRefused) {
    const EditModifier edit = makeEdit(1, 0);
    layPieces(edit, edit->getId(0), {{L"A", 10, 0}});
    celOf(edit, 0)->setStripCookie(0, edit.getCookie());
    EXPECT_THAT(exportOtio(edit).status().message(), testing::HasSubstr("nested in itself"));
}

} // namespace
