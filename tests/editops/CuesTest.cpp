#include "editops/CueEdit.h"
#include "editops/CueLogs.h"
#include "editops/CueRegions.h"
#include "editops/TrackGroups.h"
#include "platform/store/EditModule.h"
#include "tests/editops/Shots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class Cues : public ShotsFixture {
protected:
    // One picture and two sound channels, 40 s: A for 20 s, then B.
    static EditModifier makeReel() {
        EditModifier edit = makeEdit(1, 2, Kv::FrameRate(25), L"Reel");
        for (const IdStamp& channel : edit->getChans())
            layPieces(edit, channel, {{L"A", 500, 100}, {L"B", 500, 50}});
        return edit;
    }
};

// A cue as it is written in the tables: start, end (kNoTime: a point), name.
struct Mark {
    double start, end;
    const wchar_t* name = L"cue";
};
std::vector<Cue> cuesOf(const std::vector<Mark>& marks) {
    std::vector<Cue> cues;
    for (const Mark& mark : marks) {
        cues.emplace_back(mark.start, mark.name);
        cues.back().setEndTime(mark.end);
    }
    return cues;
}

} // namespace

TEST_F(Cues, BecomeRegionsInTheirOrder) {
    const struct {
        const char* name;
        std::vector<Mark> cues;
        std::vector<NamedRegion> regions;
    } rows[] = {
        {"one point", {{10, kNoTime}}, {}},
        {"points reach to the next",
         {{10, kNoTime, L"a"}, {20, kNoTime, L"b"}, {30, kNoTime, L"c"}},
         {{L"a", {10, 20}}, {L"b", {20, 30}}}},
        {"end first", {{12, 10, L"a"}}, {{L"a", {10, 12}}}},
        {"a point before a range",
         {{1, kNoTime, L"a"}, {3, 9, L"b"}},
         {{L"a", {1, 3}}, {L"b", {3, 9}}}},
        {"two at one time", {{4, kNoTime, L"a"}, {4, kNoTime, L"b"}}, {{L"a", {4, 4}}}},
        {"out of order", {{20, kNoTime, L"a"}, {10, kNoTime, L"b"}}, {{L"a", {10, 20}}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(regionsOf(cuesOf(row.cues)), row.regions) << row.name;
    EXPECT_THAT(getRegionsFromCues(EditPtr()), IsEmpty());
}

TEST_F(Cues, BecomeLogsAsLongAsTheirRegions) {
    const EditModifier edit = makeReel();
    for (const Cue& cue : cuesOf({{2, 5}, {18, kNoTime, L"Two"}, {22, kNoTime}}))
        edit->addCue(cue);
    EditModule module{EditPtr(edit)};
    module.selectAll(false); // makes no difference
    for (const eLogType type :
         {kLogTypeEdit, kLogTypeSyncGhost, kLogTypePrintGhost, kLogTypeSubclip}) {
        const CookieVec logs = makeLogsUsingCuePoints(type, module);
        ASSERT_THAT(logs, SizeIs(2));
        const EditPtr one(logs[0]), two(logs[1]);
        EXPECT_EQ(one->getLogType(), type);
        EXPECT_EQ(piecesOf(one, kChanVideo), "A@150+75");
        EXPECT_EQ(piecesOf(two, kChanAudio, 1), "A@550+50 B@50+50");
        EXPECT_EQ(two->getName(), L"Two");
        EXPECT_EQ(one->getCues().getNumCuePoints() + two->getCues().getNumCuePoints(), 0u);
    }
    EXPECT_EQ(edit->getCues().getNumCuePoints(), 3u);
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(Cues, NameTheirLogsUnlessTheyCarryTheDefaultName) {
    const EditModifier edit = makeReel();
    const struct {
        const wchar_t *cue, *log;
    } rows[] = {
        {L"Intro", L"Intro"},         {L"  Intro  ", L"Intro"},    {L"\tIntro", L"\tIntro"},
        {L"", L"Reel (Subclip)"},     {L"   ", L"Reel (Subclip)"}, {L"Marker", L"Reel (Subclip)"},
        {L"mARk", L"Reel (Subclip)"}, {L"m", L"Reel (Subclip)"},   {L"Marker 1", L"Marker 1"},
        {L"Markers", L"Markers"},
    };
    std::vector<Cue> cues = cuesOf({{-1e30, 1e30}}); // fails; the others are still made
    for (const auto& row : rows)
        cues.emplace_back(TimeRange(1, 2), row.cue);
    const CookieVec logs = makeLogsUsingCuePoints(kLogTypeSubclip, edit, cues);
    ASSERT_THAT(logs, SizeIs(std::size(rows)));
    for (std::size_t i = 0; i < logs.size(); ++i)
        EXPECT_EQ(EditPtr(logs[i])->getName(), rows[i].log) << i;
    const std::size_t before = edits();
    EXPECT_THAT(makeLogsUsingCuePoints(kLogTypeSource, edit, cues), IsEmpty());
    EXPECT_THAT(makeLogsUsingCuePoints(kLogTypeSubclip, EditPtr(), cues), IsEmpty());
    EXPECT_THAT(makeLogsUsingCuePoints(kLogTypeSubclip, EditModule(edit)), IsEmpty());
    EXPECT_EQ(edits(), before);
}

TEST_F(Cues, BecomeOneEditOfRegionsBackToBack) {
    const EditModifier edit = makeReel();
    edit->setVideoMetadata("{\"width\":1920}");
    const EditModifier made =
        makeEditFromCues(edit, cuesOf({{0, 5}, {6, 6}, {10, 12}, {19, 21}, {30, kNoTime}}), false);
    ASSERT_TRUE(made);
    for (const IdStamp& channel : made->getChans(kChanVideo | kChanAudio))
        EXPECT_EQ(piecesOf(made, channel), "A@100+125 A@350+50 A@575+25 B@50+25");
    EXPECT_EQ(made->getNumChans(kChanAudio), 2);
    for (const IdStamp& channel : made->getChans(kChanAudio))
        EXPECT_TRUE(made->getLevelsChan(channel).valid());
    EXPECT_EQ(made->getName(), L"Reel (From markers)");
    EXPECT_EQ(made->getVideoMetadata(), edit->getVideoMetadata());
    EXPECT_EQ(made->getFrameRate(), edit->getFrameRate());
    EXPECT_TRUE(edit->isImported());
    EXPECT_FALSE(made->isImported());
    edit->setImported(false);
    EXPECT_EQ(makeEditFromCues(edit, {}, true)->getEndTime(), 0);
    EXPECT_FALSE(edit->isImported());
    EXPECT_FALSE(makeEditFromCues(EditPtr(), cuesOf({{0, 5}}), false));
}

TEST_F(Cues, LeaveGroupsAloneOrCarryThemOverToTheChannelsThatAreThere) {
    const EditModifier from = makeEdit(1, 4), to = makeEdit(1, 3);
    const auto source = from->getChans(), target = to->getChans();
    to->groupChannels({target[0], target[1]}, true);
    recreateTrackGroups(from, to);
    EXPECT_EQ(to->openObjectInternal()->size(), 1u) << "no groups to carry";
    from->groupChannels({source[1], source[2]}, true);
    from->groupChannels({source[3], source[4]}, true); // the target has one of them
    recreateTrackGroups(from, to);
    recreateTrackGroups(EditPtr(), to);
    recreateTrackGroups(from, EditPtr());
    const auto groups = to->openObjectInternal();
    ASSERT_EQ(groups->size(), 1u);
    EXPECT_THAT(groups->getGroupContents(0), ElementsAre(target[1], target[2]));
}
