#include "editops/RangeCopy.h"

#include "CopyFixture.h"
#include "editops/CopyKinds.h"
#include "platform/prefs/Configuration.h"

#include <cmath>

using namespace cutroom;
using namespace cutroom::test;
using testing::IsEmpty;

namespace {

class RangeCopy : public CopyFixture {
protected:
    static EditModifier copyOf(const EditPtr& edit, double t1, double t2,
                               eLogType type = kLogTypeEdit) {
        return edcopy_general_copy_range(edit.getCookie(), type, L"", t1, t2);
    }
};

TEST_F(RangeCopy, theEndsArePutOnFramesATenthUp) {
    struct Row {
        double from, to; // in frames
        int first, length;
    };
    const Row rows[] = {{10, 20, 10, 10},   {20, 10, 10, 10},     {0.95, 1.95, 1, 1},
                        {0.85, 1.85, 0, 1}, {10.5, 20.5, 10, 10}, {10.89, 12, 10, 2},
                        {10.91, 12, 11, 1}, {90, 500, 90, 10},    {-5, 3, -5, 8}};
    const EditModifier reel = makeReel();
    const Kv::FrameRate rate = reel->getFrameRate();
    const double frame = reel->getCelResolution();
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.from << " to " << row.to);
        const EditModifier copy = copyOf(reel, row.from * frame, row.to * frame);
        ASSERT_TRUE(copy);
        EXPECT_EQ(rate.flicksToFrameNearest(toFlicks(copy->getEndTime())), row.length);
        EXPECT_EQ(copy->getTimecode(0), reel->getTimecode(row.first * frame));
    }
}

TEST_F(RangeCopy, onlyFourTypesCanBeMade) {
    const EditModifier reel = makeReel();
    const auto before = manager().getAllEdits();
    for (const unsigned type : {0u, 1u, 3u, 32u, 256u, 1024u}) {
        SCOPED_TRACE(type);
        EXPECT_FALSE(makeNewLog(marked(reel, 0, 1), static_cast<eLogType>(type), L"x", Cookie()));
        EXPECT_FALSE(edcopy_general_copy(reel.getCookie(), static_cast<eLogType>(type)));
    }
    EXPECT_FALSE(makeNewLog(EditModule(), kLogTypeEdit, L"", Cookie()));
    EXPECT_FALSE(edcopy_general_copy(Cookie('E', 5), kLogTypeEdit));
    EXPECT_FALSE(copyOf(EditPtr(), 0, 1));
    EXPECT_FALSE(copyRange(EditModule(), kLogTypeEdit, true));
    EXPECT_FALSE(makeNewLog(marked(reel, 0, 1), kLogTypeEdit, L"", reel.getCookie())) << "taken";
    EXPECT_FALSE(makeNewLog(marked(reel, 0, 1), kLogTypeEdit, L"", Cookie('G', 5)));
    EXPECT_FALSE(makeNewLog(marked(reel, 0, 1e98), kLogTypeEdit, L"", Cookie()));
    EXPECT_FALSE(copyOf(reel, std::nan(""), 1));
    EXPECT_EQ(manager().getAllEdits().size(), before.size());
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(RangeCopy, eachKindTakesWhatDescribesTheSource) {
    const struct {
        eLogType type;
        int material; // of a copy of material 5
        const char *channels, *metadata;
        std::size_t cues;
    } rows[] = {{kLogTypeEdit, 0, "axrstL", "", 1},
                {kLogTypeSyncGhost, 0, "axstL", "{}[]", 0},
                {kLogTypePrintGhost, 0, "axrstL", "{}[]", 0},
                {kLogTypeSubclip, 5, "axstL", "{}[]", 1}};
    const EditModifier reel = makeReel();
    reel->set_original_material(5);
    reel->setVideoMetadata("{}");
    reel->setAudioMetadata("[]");
    reel->setSequencePlaybackFormat("HD");
    reel->addCue(Cue(1.5, L"here"));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        const EditModifier copy = copyRange(marked(reel, 1, 2), row.type, false);
        ASSERT_TRUE(copy);
        EXPECT_EQ(copy->getLogType(), row.type);
        EXPECT_EQ(copy->get_original_material(), row.material);
        EXPECT_EQ(contents(copy), row.channels);
        EXPECT_EQ(copy->getVideoMetadata() + copy->getAudioMetadata(), row.metadata);
        EXPECT_EQ(copy->findSequencePlaybackFormat(), "HD");
        EXPECT_EQ(copy->getCues().getNumCuePoints(), row.cues);
        EXPECT_EQ(copy->getCelCuesOn(), row.type == kLogTypeSyncGhost);
        EXPECT_EQ(config(copy, "SHOW_CEL_CUES"), row.type == kLogTypeSyncGhost ? "0" : "(none)");
        EXPECT_EQ(copy->getVideoReelId(),
                  row.type == kLogTypePrintGhost ? copy.getCookie().asString() : "");
    }
}

TEST_F(RangeCopy, aLogOfSoundAloneHasNoPictureToDescribe) {
    EditModifier sound = makeEdit(0, 1, Kv::FrameRate(25), L"Sound");
    layPieces(sound, sound->getId(0), {{L"s", 50}});
    sound->get_edit_cel_p(0)->setFlags(kCelHasMaterial);
    sound->setLogType(kLogTypeSource);
    sound->setVideoMetadata("{}");
    sound->setAudioMetadata("[]");
    ASSERT_TRUE(sound->isAudioOnlyRecording());
    const EditModifier clip = copyOf(sound, 0, 1, kLogTypeSubclip);
    EXPECT_EQ(clip->getName(), L"Sound");
    EXPECT_EQ(clip->getVideoMetadata() + clip->getAudioMetadata(), "[]");
}

TEST_F(RangeCopy, aSubclipOfASubclipIsOneLayerUnlessConfigured) {
    const EditModifier reel = makeReel();
    const EditModifier first = copyOf(reel, 0, 4, kLogTypeSubclip);
    EXPECT_EQ(contents(first), "axstL");
    EXPECT_EQ(contents(copyOf(first, 1, 4, kLogTypeSubclip)), "xstL");
    EXPECT_EQ(contents(copyOf(first, 1, 4, kLogTypeEdit)), "axstL");
    Configuration::instance().set("trace_top_level_subclips", "0");
    EXPECT_EQ(contents(copyOf(first, 1, 4, kLogTypeSubclip)), "axstL");
}

TEST_F(RangeCopy, aSyncGhostOfWhatCountsFromZeroKeepsItsLabels) {
    for (const bool zero : {true, false}) {
        const EditModifier reel = makeReel();
        if (zero)
            setStartTimecode(reel, "00:00:00:00");
        EXPECT_EQ(keepsLabels(copyOf(reel, 1, 2, kLogTypeSyncGhost)), zero);
    }
}

TEST_F(RangeCopy, aMarkerOfALayerThatIsGoneIsOneOfTheSubclip) {
    const EditModifier first = copyOf(makeReel(), 0, 4, kLogTypeSubclip);
    Cue cue(2, L"upper");
    cue.setChannel(first->getId(1));
    first->addCue(cue);
    const EditModifier copy = copyOf(first, 1, 4, kLogTypeSubclip);
    ASSERT_EQ(copy->getCues().getNumCuePoints(), 1u);
    EXPECT_FALSE(copy->getCues().getCuePoint(0).getChannel().valid());
}

TEST_F(RangeCopy, theMarksOfSelectedChannelsCount) {
    const EditModifier reel = makeReel();
    EditModule module = marked(reel, 0, 1);
    module.selectAll(false);
    module.selectChan(reel->getId(1), true);
    module.setMark(reel->getId(1), 2, Kv::MarkTypes::In);
    module.setMark(reel->getId(1), 4, Kv::MarkTypes::Out);
    const EditModifier copy = makeNewLog(module, kLogTypeSubclip, L"", Cookie());
    EXPECT_EQ(copy->getEndTime(), 2);
    EXPECT_EQ(copy->getTimecode(0), "10:00:02:00");
}

TEST_F(RangeCopy, cuesThatAPersonPlacedMoveAlong) {
    const unsigned user = kCueVisible | kCueUser;
    const struct {
        const wchar_t* name;
        double time, end;
        unsigned flags;
    } rows[] = {{L"before", 1 - 1e-5, kNoTime, user},
                {L"at the start", 1 - 1e-6, kNoTime, user},
                {L"point", 1.5, kNoTime, user},
                {L"range", 1.6, 9, user | kCueReview},
                {L"machine's", 1.7, kNoTime, kCueVisible},
                {L"hidden", 1.7, kNoTime, kCueUser},
                {L"transient", 1.7, kNoTime, user | kCueTransient},
                {L"at the end", 3 + 1e-6, kNoTime, user},
                {L"after", 3 + 1e-5, kNoTime, user}};
    const EditModifier reel = makeReel();
    for (const auto& row : rows) {
        Cue cue(row.time, row.name);
        cue.setEndTime(row.end);
        cue.setFlags(row.flags);
        cue.setChannel(reel->getId(3));
        reel->addCue(cue);
    }
    const CueList all = reel->getCues();
    for (const eLogType type : {kLogTypeEdit, kLogTypeSubclip}) {
        const EditModifier copy = copyOf(reel, 1, 3, type);
        const CueList copied = copy->getCues();
        std::wstring names;
        for (const Cue& moved : copied.cues()) {
            names += moved.getName() + L", ";
            const auto& cue =
                *std::find_if(all.cues().begin(), all.cues().end(),
                              [&](const Cue& one) { return one.getName() == moved.getName(); });
            EXPECT_NEAR(moved.getTime(), cue.getTime() - 1, 1e-9);
            EXPECT_EQ(moved.getEndTime(), cue.hasEnd() ? cue.getEndTime() - 1 : kNoTime);
            EXPECT_NE(moved.getExtID(), cue.getExtID());
            EXPECT_EQ(moved.getChannel(), copy->getChans(kChanAudio)[0]);
        }
        EXPECT_EQ(toUtf8(names), "at the start, point, range, at the end, ");
    }
}

} // namespace
