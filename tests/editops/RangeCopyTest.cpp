#include "editops/RangeCopy.h"

#include "CopyFixture.h"
#include "editops/CopyKinds.h"
#include "platform/prefs/Configuration.h"
#include "tests/support/Scale.h"

#include <random>

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;
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

TEST_F(RangeCopy, aGivenCookieIsTheLogsOwn) {
    const EditModule part = marked(makeReel(), 1, 2);
    const Cookie own('E', 4711);
    EXPECT_EQ(edcopy_general_copy_range(Cookie(), own, kLogTypeSubclip, L"", part).getCookie(),
              own);
    EXPECT_EQ(edcopy_general_copy_range(Cookie(), kLogTypeEdit, L"N", part)->getName(), L"N");
}

struct KindRow {
    const char* name;
    eLogType type;
    const char* ranged; // names by copyRange and by edcopy_general_copy
    const char* general;
    const char* kind; // IS_DUPE
    int material;     // of a copy of material 5
    const char* channels;
    bool parent, cues;
};
class RangeCopyKind : public RangeCopy, public testing::WithParamInterface<KindRow> {};

TEST_P(RangeCopyKind, IsNamedMarkedAndDescribed) {
    const KindRow& row = GetParam();
    const EditModifier reel = makeReel();
    reel->set_original_material(5);
    reel->setVideoMetadata("{\"v\":1}");
    reel->setAudioMetadata("{\"a\":1}");
    reel->addCue(Cue(1.5, L"here"));
    const EditModifier copy = copyRange(marked(reel, 1, 2), row.type, false);
    ASSERT_TRUE(copy);
    EXPECT_EQ(toUtf8(copy->getName()), row.ranged);
    EXPECT_EQ(toUtf8(edcopy_general_copy(reel.getCookie(), row.type)->getName()), row.general);
    EXPECT_EQ(copy->getLogType(), row.type);
    EXPECT_EQ(config(copy, "IS_DUPE"), row.kind);
    EXPECT_EQ(copy->get_original_material(), row.material);
    EXPECT_EQ(contents(copy), row.channels);
    EXPECT_EQ(config(copy, "parent"), row.parent ? reel.getCookie().asString() : "(none)");
    EXPECT_EQ(copy->getVideoMetadata(), row.parent ? "{\"v\":1}" : "");
    EXPECT_EQ(copy->getAudioMetadata(), row.parent ? "{\"a\":1}" : "");
    EXPECT_EQ(copy->getCues().getNumCuePoints(), row.cues ? 1u : 0u);
    EXPECT_EQ(copy->getCelCuesOn(), row.type == kLogTypeSyncGhost);
    EXPECT_EQ(config(copy, "SHOW_CEL_CUES"), row.type == kLogTypeSyncGhost ? "0" : "(none)");
    EXPECT_EQ(copy->getVideoReelId(),
              row.type == kLogTypePrintGhost ? copy.getCookie().asString() : "");
}

INSTANTIATE_TEST_SUITE_P(Rows, RangeCopyKind,
                         testing::Values(KindRow{"edit", kLogTypeEdit, "Reel (Section)",
                                                 "Reel (sequence)", "(none)", 0, "axrstL", false,
                                                 true},
                                         KindRow{"syncGhost", kLogTypeSyncGhost, "Reel (Sync)",
                                                 "Reel (sync)", "1", 0, "axstL", true, false},
                                         KindRow{"printGhost", kLogTypePrintGhost, "Reel (Print)",
                                                 "Reel (print)", "2", 0, "axrstL", true, false},
                                         KindRow{"subclip", kLogTypeSubclip, "Reel (Subclip)",
                                                 "Reel (subclip)", "3", 5, "axstL", true, true}),
                         [](const auto& row) { return row.param.name; });

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

TEST_F(RangeCopy, anEditKeepsTheSelectedChannels) {
    const std::pair<const char*, const char*> rows[] = {
        {"110110", "axrstL"}, {"100110", "astL"}, {"000100", "sL"}, {"000000", ""}};
    const EditModifier reel = makeReel();
    for (const auto& [selected, kept] : rows) {
        SCOPED_TRACE(selected);
        EditModule module = marked(reel, 1, 3);
        for (int i = 0; i < 6; ++i)
            module.selectChan(reel->getId(i), selected[i] == '1');
        EXPECT_EQ(contents(copyRange(module, kLogTypeEdit, false)), kept);
        const EditModifier all = copyRange(module, kLogTypeEdit, true);
        EXPECT_EQ(contents(all), kept);
        EXPECT_EQ(all->getName(), L"Reel (Copy)");
        EXPECT_EQ(contents(copyRange(module, kLogTypeSyncGhost, true)), "axstL");
    }
}

TEST_F(RangeCopy, asManyChannelsAsTheSourceHasPicturesAndSoundsCountAsAll) {
    const EditModifier reel = makeReel();
    EditModule module = whole(reel); // levels are none of the five
    module.selectChan(reel->getId(0), false);
    EXPECT_EQ(contents(copyRange(module, kLogTypeEdit, false)), "axrstL");
    EXPECT_EQ(contents(copyRange(module, kLogTypeEdit, true)), "xrstL");
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
    struct Row {
        double time, end;
        unsigned flags;
        double copied; // kNoTime: not
    };
    const unsigned user = kCueVisible | kCueUser;
    const Row rows[] = {{1.5, kNoTime, user, 0.5},
                        {1.5, 9, user | kCueReview, 0.5},
                        {1.5, kNoTime, kCueVisible, kNoTime},
                        {1.5, kNoTime, kCueUser, kNoTime},
                        {1.5, kNoTime, user | kCueTransient, kNoTime},
                        {1 - 1e-6 / 2, kNoTime, user, -1e-6 / 2},
                        {3 + 1e-6 / 2, kNoTime, user, 2 + 1e-6 / 2},
                        {1 - 1e-6, kNoTime, user, -1e-6},
                        {3 + 1e-6, kNoTime, user, 2 + 1e-6},
                        {1 - 1e-5, kNoTime, user, kNoTime},
                        {3 + 1e-5, kNoTime, user, kNoTime}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.time << " flags " << row.flags);
        const EditModifier reel = makeReel();
        Cue cue(row.time, L"cue");
        cue.setEndTime(row.end);
        cue.setFlags(row.flags);
        cue.setChannel(reel->getId(3));
        reel->addCue(cue);
        for (const eLogType type : {kLogTypeEdit, kLogTypeSubclip}) {
            const EditModifier copy = copyOf(reel, 1, 3, type);
            const CueList cues = copy->getCues();
            ASSERT_EQ(cues.getNumCuePoints(), row.copied == kNoTime ? 0u : 1u);
            if (row.copied == kNoTime)
                continue;
            const Cue& moved = cues.getCuePoint(0);
            EXPECT_NEAR(moved.getTime(), row.copied, 1e-9);
            EXPECT_EQ(moved.getEndTime(), row.end == kNoTime ? kNoTime : row.end - 1);
            EXPECT_NE(moved.getExtID(), cue.getExtID());
            EXPECT_EQ(moved.getChannel(), copy->getChans(kChanAudio)[0]);
        }
    }
}

TEST_F(RangeCopy, whatDescribesASourceComesAlongByItsKeys) {
    const auto copied = split("scene|shot|who|description|notes|reelid|reelid1|24P_reel|camreel|"
                              "cam_date|lab_reel|comp_reel|frame_rate|AudioInputSampleRate|"
                              "compression format|frame_based|pulldown|sequence|Source Format|"
                              "Aspect Ratio|media_date|take|source_medium|METADATA_CORE|"
                              "METADATA_BUFFERFORMAT|METADATA_VIDEO|METADATA_VIDEOSEQUENCE|"
                              "stripv_width|stripv_height|director",
                              '|');
    const char* const others[] = {"mood", "stripv_zoom", "BACKUP_x", "other"};
    ASSERT_TRUE(CurrentProject::addCustomAttribute("director", L"Director", DBFieldTypes::text));
    ASSERT_TRUE(CurrentProject::addCustomAttribute("mood", L"Mood", DBFieldTypes::text));
    const EditModifier reel = makeReel();
    for (const auto& key : copied)
        reel->setConfig(key, "of " + key);
    for (const char* key : others)
        reel->setConfig(key, *key == 'm' ? "" : "stays");
    reel->setSequencePlaybackFormat("HD");
    BITCEffect burnt;
    burnt.addLabel({kLabelVideoTimecode, {2, 1}, 0.25F, 0.5F, 0.1F, 0xFF, L"TC "});
    burnt.addLabel({});
    burnt.setEnabled(true);
    reel->setBITC(burnt);
    reel->setChanUserName(reel->getId(4), L"Boom");
    reel->addLabel(EditLabel(kLabelKeycode, {3, 1}, {Kv::FrameRate(25), false}, 1600));
    const EditModifier copy = copyOf(reel, 1, 2);
    for (const auto& key : copied)
        EXPECT_EQ(config(copy, key), "of " + key);
    for (const char* key : others)
        EXPECT_EQ(config(copy, key), "(none)");
    EXPECT_EQ(copy->findSequencePlaybackFormat(), "HD");
    EXPECT_EQ(copy->getBITC(), burnt);
    EXPECT_EQ(copy->getChanUserName(copy->getId(4)), L"Boom");
    EXPECT_EQ(copy->getLabels().size(), 2u);
    EXPECT_EQ(copy->getLabel(kLabelKeycode, {3, 1}).get_abs_posn(), 1625);
    EXPECT_EQ(copy->getTimecode(0), "10:00:01:00");
    EXPECT_EQ(copy->getLevelNodes(copy->getChans(kChanLevels)[0]),
              (LevelNodes{{0, 0.25F}, {kFlicksPerSecond, 0.5F}}));
}

// The plain model: pieces in quarters of a frame, a later one over the earlier ones.
struct Laid {
    int from, to;
    CelSegment segment;
};
std::pair<Cookie, Flicks> shown(const std::vector<Laid>& pieces, int quarter) {
    const auto piece = std::find_if(pieces.rbegin(), pieces.rend(), [&](const Laid& laid) {
        return laid.from <= quarter && quarter < laid.to;
    });
    if (piece == pieces.rend() || !piece->segment.material.valid())
        return {};
    const Flicks at = toFlicks((quarter + 0.5) / 100);
    return {piece->segment.material, piece->segment.stripStart + at - piece->segment.start};
}

TEST_F(RangeCopy, showsWhatTheRangeShows) {
    for (long round = 0; round < rounds(40, 4000); ++round) {
        SCOPED_TRACE(round);
        std::mt19937 random(static_cast<unsigned>(round));
        const auto upTo = [&](int limit) {
            return static_cast<int>(random() % static_cast<unsigned>(limit));
        };
        EditModifier edit = makeEdit(2, 1, Kv::FrameRate(25), L"Random");
        std::vector<std::vector<Laid>> model(3);
        for (int channel = 0; channel < 3; ++channel)
            for (int pieces = upTo(8); pieces >= 0; --pieces) {
                Laid laid{upTo(400), 0, {}};
                laid.to = laid.from + 1 + upTo(400 - laid.from);
                laid.segment.start = toFlicks(laid.from / 100.0);
                laid.segment.end = toFlicks(laid.to / 100.0);
                laid.segment.material = upTo(4) ? Cookie('V', random()) : Cookie();
                laid.segment.stripStart = toFlicks(upTo(1000) / 100.0);
                ASSERT_TRUE(edit->get_edit_cel_p(channel)->overwrite(laid.segment).ok());
                model[static_cast<std::size_t>(channel)].push_back(laid);
            }
        const int from = upTo(400);
        const int to = from + upTo(440 - from);
        const EditModifier copy =
            makeNewLog(marked(edit, from / 100.0, to / 100.0), kLogTypeEdit, L"", Cookie());
        ASSERT_TRUE(copy && copy->checkConsistency().empty());
        for (int channel = 0; channel < 3; ++channel)
            for (int i = 0; i < to - from + 8; ++i) {
                const auto expected =
                    i < to - from ? shown(model[static_cast<std::size_t>(channel)], from + i)
                                  : std::pair<Cookie, Flicks>();
                const Kv::Ptr<Cel> cel = copy->get_edit_cel_p(channel);
                const double at = (i + 0.5) / 100;
                ASSERT_EQ(cel->get_strip_cookie(at), expected.first) << channel << " " << i;
                if (expected.first.valid()) {
                    ASSERT_EQ(toFlicks(cel->get_strip_time(at)), expected.second) << i;
                }
            }
        ASSERT_TRUE(manager().discard({edit.getCookie(), copy.getCookie()}).ok());
    }
}

} // namespace
