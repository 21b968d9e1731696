// Edits as edit lists: what a list can hold comes out as it came in, the rest is refused or told.
#include "interchange/EdlList.h"
#include "interchange/EdlReader.h"
#include "interchange/EdlWriter.h"
#include "interchange/Exporter.h"
#include "tests/interchange/Corpus.h"
#include "tests/interchange/ImportFixture.h"
#include "tests/interchange/OtioText.h"
#include "tests/interchange/RandomEdit.h"
#include "tests/support/Scale.h"

#include <gmock/gmock.h>

namespace {

using namespace cutroom;
using namespace cutroom::test;
using testing::Contains;
using testing::HasSubstr;

std::string exported(const EditPtr& edit, const std::string& track = {}) {
    const auto file = exportEdl(edit, track);
    EXPECT_TRUE(file.ok()) << file.status().text();
    return file.ok() ? file->text : std::string();
}

// The four timecodes, kind, length of transition and speed of each event.
std::vector<std::string> eventsOf(const std::string& bytes) {
    bool latin1 = false;
    std::vector<std::string> events;
    for (const EdlEvent& event : parseEdlLines(edlLines(bytes, &latin1)).events)
        events.push_back(event.timecodes + " " + event.kindText + " " +
                         std::to_string(event.duration) + " " + event.speedText);
    std::sort(events.begin(), events.end());
    return events;
}

class ExportEdlCorpus : public ImportFixture, public testing::WithParamInterface<std::string> {};

TEST_P(ExportEdlCorpus, WhatCameInComesOut) {
    const std::string path = corpus::folder() + GetParam();
    const ImportReport report = import(path);
    reopen();
    const EditPtr edit(report.edits.at(0).edit);
    const std::string text = exported(edit);
    const EditPtr second = imported("again.edl", text, edit->getFrameRate());
    EXPECT_EQ(contentsOf(second), contentsOf(edit));
    EXPECT_EQ(exported(second), text);
    // There must be as many events as an independent reader found. Only two things are lost: a key
    // without length, and the part of a transition that is longer than its event.
    const std::set<std::string> changed{"edl/key_transition.edl", "edl/speedup_and_fadeout.edl"};
    std::vector<std::string> lost;
    const auto before = eventsOf(*readFile(path)), after = eventsOf(text);
    EXPECT_EQ(before.size(), corpus::facts(GetParam())->getUnsigned("event_lines"));
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(),
                        std::back_inserter(lost));
    EXPECT_THAT(lost, testing::SizeIs(changed.contains(GetParam()) ? 1 : 0));
    // Through OTIO, which keeps what an event said as metadata, the same events come out.
    EXPECT_EQ(eventsOf(exported(imported("again.otio", exportOtio(edit)->text))), after);
}

INSTANTIATE_TEST_SUITE_P(Files, ExportEdlCorpus, testing::ValuesIn(corpus::files("edl")),
                         [](const auto& file) { return corpus::testName(file.param); });

class ExportEdl : public ImportFixture {
protected:
    static EditModifier makeList(const Kv::FrameRate& rate, const std::string& start) {
        EditModifier edit = makeEdit(1, 2, rate, L"List");
        setStartTimecode(edit, start, start[8] == ';');
        return edit;
    }
    EditPtr reimported(const EditPtr& edit) {
        return imported("l.edl", exported(edit), edit->getFrameRate());
    }
};

TEST_F(ExportEdl, FreshEditIsAStrictList) {
    const EditModifier edit = makeList(Kv::FrameRate(30000, 1001), "23:59:59;00");
    layPieces(edit, edit->getId(0), {{L"long name of a.mov", 40, 10}, {L"", 10, 0}, {L"B", 50, 0}});
    layPieces(edit, edit->getId(1), {{L"B", 40, 5}});
    layPieces(edit, edit->getId(2), {{L"B", 40, 5}});
    Cue cue(1.0, L"Name");
    cue.setDescription(L"two\nlines");
    cue.setCustomMetadata("take", L"3");
    edit->addCue(cue);
    const auto file = exportEdl(edit);
    ASSERT_TRUE(file.ok());
    EXPECT_EQ(file->text, "TITLE:   List\n"
                          "FCM: DROP FRAME\n"
                          "001  LONG_NAM V     C        00:00:00;10 00:00:01;20 23:59:59;00 "
                          "00:00:00;10\n"
                          "* FROM CLIP NAME:  long name of a.mov\n"
                          "002  B        AA    C        00:00:00;05 00:00:01;15 23:59:59;00 "
                          "00:00:00;10\n"
                          "* FROM CLIP NAME:  B\n"
                          "* LOC: 00:00:00;00 WHITE   Name: two lines\n"
                          "003  B        V     C        00:00:00;00 00:00:01;20 00:00:00;20 "
                          "00:00:02;10\n"
                          "* FROM CLIP NAME:  B\n");
    EXPECT_EQ(exported(edit), file->text);
    EXPECT_THAT(file->warnings, Contains("values of fields of markers left out: 1"));
}

// Frames are counted by labels, not by the clock, so they do not drift over a day.
TEST_F(ExportEdl, LongEditsKeepTheirFrames) {
    for (const int nominal : {30, 60}) {
        const EditModifier edit = makeList(Kv::FrameRate(nominal * 1000, 1001), "00:00:00;00");
        const int day = nominal * 86400 - nominal / 15 * (1440 - 144);
        layPieces(edit, edit->getId(0), {{L"A", 17, 0}, {L"B", day - 1017, 3}, {L"A", 999, 7}});
        const EditPtr again = reimported(edit);
        EXPECT_EQ(itemsOf(again, *celOf(again, 0)), itemsOf(edit, *celOf(edit, 0)));
        EXPECT_TRUE(again->getDropFrame());
    }
}

TEST_F(ExportEdl, WhatAListCannotHoldIsRefusedOrTold) {
    const EditModifier edit = makeEdit(2, 1, Kv::FrameRate(25));
    EXPECT_FALSE(exportEdl(edit).ok());
    EXPECT_EQ(exportEdl({}).status().message(), "there is no edit to export");
    EXPECT_FALSE(exportOtio({}).ok());
    for (int i = 0; i < 3; ++i)
        layPieces(edit, edit->getId(i), {{i == 1 ? L"Up" : L"Low", 20, 0}, {L"End", 20, 0}});
    EXPECT_THAT(exportEdl(edit).status().message(), HasSubstr("--track: V1, V2"));
    EXPECT_EQ(exportEdl(edit, "V3").status().code(), StatusCode::notFound);
    EXPECT_THAT(exported(edit, "V2"), HasSubstr("UP       V "));
    EXPECT_THAT(exported(edit, "A1"), testing::Not(HasSubstr(" V  ")));
    Kv::Ptr<Cel> cel = celOf(edit, 0);
    ChannelEvent event = cel->get_event(0);
    event.flags |= kEventDisabled;
    ASSERT_TRUE(cel->setEvent(0, event).ok());
    EXPECT_THAT(exportEdl(edit, "V1")->warnings, Contains("disabled clips left out: 1"));
    EXPECT_FALSE(exportEdl(makeEdit(1, 0, Kv::FrameRate(120))).ok());
    // No transition can lead away from two clips.
    using namespace otiotext;
    const std::string items = clip("X", 0, 50) + "," + clip("A", 9, 5) + "," + transition(20, 20) +
                              "," + clip("B", 29, 30);
    EXPECT_THAT(exported(imported("t.otio", timeline(track(items)))),
                HasSubstr("D    025 00:00:01:00 00:00:02:11 00:00:02:02 00:00:03:13"));
}

// The clip gives its last frames to the fade, whether or not the fade goes on behind it.
TEST_F(ExportEdl, FadesToBlackKeepTheirFrames) {
    for (const int behind : {0, 4})
        for (const char* const rest : {"", "gap", "off"}) {
            std::string items = otiotext::clip("A", 0, 24) + "," + otiotext::transition(10, behind);
            if (*rest)
                items += "," + (*rest == 'g' ? otiotext::item("Gap.1", "", 0, 24)
                                             : otiotext::clip("B", 0, 24, R"("enabled":false)"));
            const EditPtr edit = imported("t.otio", otiotext::timeline(otiotext::track(items)));
            const std::string text = *rest ? exportEdl(edit)->text : exported(edit);
            SCOPED_TRACE(text);
            EXPECT_THAT(text, HasSubstr("V     D    01" + std::to_string(behind) + " "));
            EXPECT_NEAR(reimported(edit)->getEndTime(), edit->getEndTime(), 1e-6);
        }
}

TEST_F(ExportEdl, MarkersTakeTheNearestColourThatListsKnowAndNoTimecodeOfTheDayBefore) {
    const EditModifier edit = makeList(Kv::FrameRate(25), "00:00:00:00");
    layPieces(edit, edit->getId(0), {{L"A", 50, 0}});
    edit->addCue(Cue(-1.0, L"early"));
    int frame = 0;
    std::string locators;
    for (const auto& [colour, name] : {std::pair(0xFF8000u, "YELLOW"),
                                       {0xFF7F00u, "RED"},
                                       {0x7F7F7Fu, "BLACK"},
                                       {0xFFC0CBu, "PINK"}}) {
        Cue cue(frame / 25.0, L"m");
        cue.setColour(colour);
        edit->addCue(cue);
        locators += format("* LOC: 00:00:00:%02d %-7s m\n", frame++, name);
    }
    const auto file = exportEdl(edit);
    EXPECT_THAT(file->text, testing::EndsWith("A\n" + locators));
    EXPECT_THAT(file->warnings,
                testing::IsSupersetOf({"markers before 00:00:00:00 left out: 1",
                                       "marker colours, written as the nearest known: 3"}));
    edit->addLabel(EditLabel(kLabelVideoTimecode, {2, 1}, {edit->getFrameRate()}, -50));
    EXPECT_THAT(exported(edit), HasSubstr("23:59:58:00 00:00:00:00")) << "a day before as a whole";
    EXPECT_THAT(exported(edit), HasSubstr("* LOC: 23:59:57:00 WHITE   early"));
}

TEST_F(ExportEdl, ManySoundTracksComeBack) {
    const EditModifier edit = makeEdit(1, 120, Kv::FrameRate(25));
    for (int i = 0; i < 121; ++i)
        layPieces(edit, edit->getId(i), {{L"A", 20, 0}});
    EXPECT_EQ(reimported(edit)->getNumChans(kChanAudio), 120);
}

TEST_F(ExportEdl, WhatReadersWillTakeForSomethingElseIsTold) {
    for (const auto& [rate, start, taken] :
         {std::tuple{Kv::FrameRate(24000, 1001), "00:00:00:00", "24"},
          {Kv::FrameRate(60000, 1001), "00:00:00:00", "60"},
          {Kv::FrameRate(48), "00:00:00:00", "50"},
          {Kv::FrameRate(60000, 1001), "00:00:00;00", ""},
          {Kv::FrameRate(25), "00:00:00:00", ""}}) {
        const EditModifier edit = makeList(rate, start);
        layPieces(edit, edit->getId(0), {{L"A", 10, -1}, {L"B", 10, 0}});
        const std::string said = join(exportEdl(edit)->warnings, "; ");
        EXPECT_THAT(said, HasSubstr("timecode wraps: 1"));
        const auto at = said.find("who is not told takes ");
        EXPECT_EQ(at == said.npos ? "" : said.substr(at + 22), taken);
    }
    const auto mixed = imported(
        "t.otio", otiotext::timeline(otiotext::track(otiotext::clip("A", 0, 24) + "," +
                                                     otiotext::clip("B", 0, 25, {}, "25"))));
    EXPECT_THAT(exportEdl(mixed)->warnings,
                Contains(HasSubstr(
                    "at another frame rate than the edit, which an edit list cannot say: 1")));
}

TEST_F(ExportEdl, ChangesAreToldAndTheRestStays) {
    const std::string list = "TITLE: T\nFCM: NON-DROP FRAME\n* PROJECT: P\n"
                             "001  TAPE1    V     C        01:00:00:00 01:00:04:00 10:00:00:00 "
                             "10:00:04:00\n* FROM CLIP NAME: One\n* COMMENT: kept\n"
                             "002  TAPE2    V     C        02:00:00:00 02:00:02:00 10:00:04:00 "
                             "10:00:08:00\nM2   TAPE2    012.5                02:00:00:00\n"
                             "003  BL        V     C        00:00:00:00 00:00:05:00 10:00:08:00 "
                             "10:00:09:00\n* COMMENT: black\n* LOC: 10:00:08:01 Green   note\n"
                             "*   7  White  USER  10:00:00:05  A6  text\n"
                             "*   2  Red  USER  10:00:00:06  V1  second\n"
                             "004  BG       V     K B      00:00:00:00 00:00:01:00 10:00:09:00 "
                             "10:00:10:00\n"
                             "004  FG       V     K O  010 00:00:00:00 00:00:01:00 10:00:09:00 "
                             "10:00:10:00\n"
                             "005  R        V     C        00:00:02:00 00:00:01:00 10:00:10:00 "
                             "10:00:11:00\nM2 R -025.0 00:00:02:00\n* FROM CLIP NAME: R\n";
    const EditModifier edit = imported("t.edl", list, Kv::FrameRate(25));
    ASSERT_TRUE(celOf(edit, 0)->trim(1, edit->getFrameRate().frameToFlicks(-26)).ok());
    const std::string text = exported(edit);
    for (const char* const expected :
         {"01:00:00:00 01:00:02:24 10:00:00:00 10:00:02:24\n* FROM CLIP NAME:  One\n* COMMENT: "
          "kept",
          "FCM: NON-DROP FRAME\n* PROJECT: P\n001", "004  FG       V     K O  010",
          "00:00:02:00 00:00:01:00 10:00:10:00",
          "01:59:59:12 02:00:02:00 10:00:02:24 10:00:08:00\nM2   TAPE2    012.5",
          "00:00:00:00 00:00:05:00 10:00:08:00 10:00:09:00\n* COMMENT: black\n* LOC: 10:00:08:01 "
          "Green   note\n004",
          "00:00:02:00\n* FROM CLIP NAME:  R\n*     1  Red  USER  10:00:00:06  V1  second\n*     2 "
          " White  USER  "
          "10:00:00:05  A6  text\n"})
        EXPECT_THAT(text, HasSubstr(expected));
    EXPECT_EQ(contentsOf(reimported(edit)), contentsOf(edit));
}

// The same goes for the first line of a transition, which otherwise stays as it was read.
TEST_F(ExportEdl, WhatGoesOutIsToldWhereItIs) {
    const std::string outgoing = "002  A        V     C        01:00:04:00 01:00:04:00";
    const std::string list =
        "001  A        V     C        01:00:00:00 01:00:04:00 10:00:00:00 10:00:04:00\n" +
        outgoing +
        " 10:00:04:00 10:00:04:00\n"
        "002  B        V     D    025 02:00:00:00 02:00:02:00 10:00:04:00 10:00:06:00\n";
    const EditModifier edit = imported("t.edl", list, Kv::FrameRate(25));
    EXPECT_THAT(exported(edit), HasSubstr(outgoing));
    const Kv::Ptr<Cel> cel = celOf(edit, 0);
    ChannelEvent event = cel->get_event(0);
    event.stripTime += edit->getFrameRate().frameToFlicks(5);
    ASSERT_TRUE(cel->setEvent(0, event).ok());
    EXPECT_THAT(exported(edit), HasSubstr("C        01:00:04:05 01:00:04:05 10:00:04:00"));
}

// Clips of all channels and markers at their record time, with source, length and speed in frames.
std::vector<std::string> recordOf(const EditPtr& edit) {
    std::vector<std::string> all;
    for (const IdStamp& channel : edit->getChans()) {
        const Cel& cel = *edit->get_edit_cel_p(channel);
        for (std::uint32_t i = 0; i < cel.numSegments(); ++i)
            if (const CelSegment segment = cel.getSegment(i); segment.material.valid())
                all.push_back(std::to_string(edit->getChanType(channel)) + " " +
                              edit->getTimecode(toSeconds(segment.start)) + " " +
                              std::to_string(segment.end - segment.start) + " " +
                              std::to_string(segment.stripStart) + " " + toText(segment.speed) +
                              " " + toUtf8(segment.detail.name));
    }
    const CueList cues = edit->getCues();
    for (const Cue& cue : cues.cues())
        all.push_back(edit->getTimecode(cue.getTime()) + toUtf8(cue.getDescription()));
    std::sort(all.begin(), all.end());
    return all;
}

TEST(WriteEdl, WhatItWritesIsReadAsTheSame) {
    const std::string times = " C 00:00:00:00 00:00:01:00 00:00:00:00 00:00:01:00\n";
    for (const std::string& list :
         {"1 A V" + times + "* FROM CLIP NAME: " + std::string(61, 'x') + "\n* not its rest\n",
          "1 A XV" + times + "2 B XV" + times, "1 A V" + times + "* FROM CLIP NAME: n\x01\n",
          "1 G V" + times + "1 A V D 9 00:00:00:00 00:00:01:00 00:00:01:00 00:00:02:00\n" +
              "* FROM CLIP IS A GENERATOR\n",
          "1 BL V" + times + "2 A V D 99 00:00:00:00 00:00:01:00 00:00:01:00 00:00:02:00\n" +
              "* TO CLIP NAME: N\n3 A V C 00:00:01:00 00:00:02:00 00:00:02:00 00:00:03:00\n"}) {
        const std::string once = writeEdl(readEdl(list, "l.edl", {})->front())->text;
        EXPECT_EQ(writeEdl(readEdl(once, "l.edl", {})->front())->text, once);
    }
}

TEST_F(ExportEdl, RandomEditsComeBack) {
    for (int round = 0; round < rounds(20, 400); ++round) {
        SCOPED_TRACE(round);
        RandomEdit random(round, 1, 3);
        const EditModifier& edit = random.edit();
        const Kv::Ptr<Cel> cel = celOf(edit, 0);
        ChannelEvent event = cel->get_event(0);
        const double speeds[] = {1, 0.5, -1, 2.25};
        event.speed = speeds[random.below(4)];
        ASSERT_TRUE(cel->setEvent(0, event).ok());
        Cue cue(edit->getEndTime(), L"");
        cue.setDescription(L"text");
        edit->addCue(cue);
        const EditPtr again = reimported(edit);
        EXPECT_EQ(recordOf(again), recordOf(edit));
        EXPECT_EQ(exported(again), exported(reimported(again)));
    }
}

} // namespace
