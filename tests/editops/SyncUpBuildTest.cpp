#include "editops/SyncUp.h"

#include "editops/CopyLog.h"
#include "editops/SyncUpMatch.h"
#include "tests/editops/Shots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <tuple>

using namespace cutroom;
using namespace cutroom::test;

namespace {

// Shots of 4 s that differ in nothing but their kind.
class SyncUpBuild : public ShotsFixture {
protected:
    static constexpr int kFrames = 100;

    static EditPtr byTime(const EditPtr& first, const EditPtr& second, double t1, double t2,
                          const synchup_params& params = {}) {
        return EditPtr(
            synchup_cookies_by_time(first.getCookie(), second.getCookie(), t1, t2, params));
    }
    static std::string labelAt(const EditPtr& edit, const MediumRoll& roll) {
        return edit->getLabel(kLabelVideoTimecode, roll).pointAt(0).removePadding();
    }

    const EditModifier sound_ = makeSound({"00:00:10:00", kFrames});
    const EditModifier picture_ = makePicture({"00:00:10:00", kFrames});
};

} // namespace

TEST_F(SyncUpBuild, JoinsPictureAndSoundByTheirLabels) {
    const EditModifier sound = makeSound({"00:00:10:00"}), picture = makePicture({"00:00:12:00"});
    const EditPtr made(synchup_cookies_by_label(sound.getCookie(), kChanAudio, picture.getCookie(),
                                                kChanVideo, {}));
    ASSERT_TRUE(made);
    EXPECT_EQ(piecesOf(made, kChanVideo), "Picture@0+1450");
    EXPECT_EQ(piecesOf(made, kChanAudio, 1), "Sound@50+1450");
    EXPECT_EQ(made->getName(), L"Picture (Sync)");
    EXPECT_EQ(made->getLogType(), kLogTypeSyncGhost);
    EXPECT_EQ(made->getConfig("IS_DUPE"), "1");
    EXPECT_EQ(made->get_original_material(), 0);
    EXPECT_EQ(labelAt(made, kPictureRoll), "00:00:12:00");
    EXPECT_EQ(labelAt(made, kSoundRoll), "00:00:12:00");
    EXPECT_EQ(made->getConfig("label.3.4.1"), "25 0 300");
    EXPECT_EQ(made->checkConsistency(), "");
    // The picture's label stays where both rules name one.
    synchup_params params;
    EXPECT_EQ(labelAt(byTime(sound, picture, 0, 0, params), kSoundRoll), "00:00:10:00");
    params.soundLabel = params.pictureLabel;
    EXPECT_EQ(labelAt(byTime(sound, picture, 0, 0, params), kPictureRoll), "00:00:12:00");
}

TEST_F(SyncUpBuild, CoversTheSpanOfItsRulesWithEveryChannel) {
    constexpr std::pair<double, double> kAll{0, -1};
    const struct {
        const char* name;
        double t1, t2; // of the sound, of the picture
        int startRule, endRule;
        std::pair<double, double> part;
        const char *picture, *sound;
    } rows[] = {
        {"Common", 0, 1, 1, 1, kAll, "Picture@25+75", "Sound@0+75"},
        {"SoundFirst", 1, 0, 1, 1, kAll, "Picture@0+75", "Sound@25+75"},
        {"Picture", 0, 1, 0, 0, kAll, "Picture@0+100", "-@0+25 Sound@0+75"},
        {"Sound", 0, 1, 3, 3, kAll, "Picture@25+75 -@0+25", "Sound@0+100"},
        {"NoSuchRules", 0, 1, 99, -7, kAll, "Picture@25+75", "Sound@0+75"},
        {"SoundToPicture", 1, 0, 3, 0, kAll, "-@0+25 Picture@0+100", "Sound@0+100 -@0+25"},
        {"Union", 0, 1, 2, 2, kAll, "Picture@0+100 -@0+25", "-@0+25 Sound@0+100"},
        {"UnionSoundFirst", 1, 0, 2, 2, kAll, "-@0+25 Picture@0+100", "Sound@0+100 -@0+25"},
        {"Apart", 0, 5, 2, 2, kAll, "Picture@0+100 -@0+125", "-@0+125 Sound@0+100"},
        {"PictureApart", 0, 5, 0, 0, kAll, "Picture@0+100", "-@0+100"},
        {"SoundApart", 0, -5, 3, 3, kAll, "-@0+100", "Sound@0+100"},
        {"Part", 0, 1, 0, 0, {2, 3}, "Picture@50+25", "Sound@25+25"},
        {"PartByMarks", 0, 0.2, 1, 1, {0, 0}, "Picture@25+75", "Sound@20+75"},
    };
    picture_->setConfig("BACKUP_MARK1", 1.0);
    for (const auto& row : rows) {
        synchup_params params;
        params.startRule = row.startRule;
        params.endRule = row.endRule;
        params.part = row.part != kAll;
        std::tie(params.partStart, params.partEnd) = row.part;
        for (const bool turned : {false, true}) { // the order of the two makes no difference
            const EditPtr made = turned ? byTime(picture_, sound_, row.t2, row.t1, params)
                                        : byTime(sound_, picture_, row.t1, row.t2, params);
            ASSERT_TRUE(made) << row.name;
            EXPECT_EQ(piecesOf(made, kChanVideo), row.picture) << row.name;
            EXPECT_EQ(piecesOf(made, kChanAudio), row.sound) << row.name;
        }
    }
}

TEST_F(SyncUpBuild, KeepsSoundBetweenFramesInSync) {
    CelSegment half = sound_->get_edit_cel_p(0)->getSegment(0);
    half.end = toFlicks(1.99); // cuts off the frame, at the start, inside and at the end
    CelSegment rest = half;
    rest.start = half.end;
    rest.end = toFlicks(3.99);
    rest.stripStart = toFlicks(100);
    rest.speed = 2;
    ASSERT_TRUE(sound_->get_edit_cel_p(0)->setSegments({half, rest}));
    synchup_params params;
    params.startRule = params.endRule = kSyncPicture;
    const EditPtr made = byTime(sound_, picture_, 0, 0.99 - 1, params);
    ASSERT_TRUE(made);
    // The sound's moment s is at s - 0.01, so at 0 stands 0.01; the cut, 1.98, goes to 2.0.
    const Kv::Ptr<Cel> cel = made->get_edit_cel_p(made->getChans(kChanAudio)[0]);
    ASSERT_EQ(cel->numSegments(), 3u);
    EXPECT_NEAR(toSeconds(cel->getSegment(0).stripStart), 0.01, 1e-6);
    EXPECT_EQ(cel->getSegment(0).end, toFlicks(2.0));
    EXPECT_NEAR(toSeconds(cel->getSegment(1).stripStart), 100.04, 1e-6);
    EXPECT_EQ(cel->getSegment(1).end, toFlicks(3.96)); // the last whole frame before 3.98
    EXPECT_FALSE(cel->getSegment(2).material.valid());
    EXPECT_EQ(cel->getSegment(2).end, toFlicks(4.0));
}

TEST_F(SyncUpBuild, TakesTheChannelsAndMetadataThatAreMeant) {
    const Cookie recorder = sound_.getCookie();
    const EditModifier camera = makeShot({"00:00:10:00", kFrames}, 1, 1, L"Camera");
    for (const auto& [shot, text] : {std::pair(sound_, "s"), {camera, "c"}}) {
        shot->setVideoMetadata(text);
        shot->setAudioMetadata(text);
    }
    synchup_params params;
    params.part = true; // makes no difference by time
    params.partStart = 2;
    params.partEnd = 3;
    const EditPtr all(synchup_general_cookies_by_time(recorder, camera.getCookie(), 0, 1, params));
    ASSERT_TRUE(all);
    EXPECT_EQ(piecesOf(all, kChanAudio, 2), "Camera@25+75");
    EXPECT_EQ(all->getVideoMetadata() + all->getAudioMetadata(), "cs");
    const EditPtr plain(synchup_general_build_edit(recorder, camera.getCookie(), 1, {}, false));
    EXPECT_EQ(plain->getNumChans(), 3);
    const EditPtr sounds(synchup_general_cookies_by_label(recorder, kChanAudio,
                                                          makeSound().getCookie(), kChanAudio, {}));
    EXPECT_EQ(sounds->getNumChans(kChanAudio), 4);
}

TEST_F(SyncUpBuild, TakesWhatDescribesThePictureFromItAndTheSoundFromTheOther) {
    const char* const keys[] = {"scene",
                                "shot",
                                "who",
                                "description",
                                "notes",
                                "reelid",
                                "24P_reel",
                                "camreel",
                                "cam_date",
                                "lab_reel",
                                "comp_reel",
                                "frame_rate",
                                "frame_based",
                                "compression format",
                                "pulldown",
                                "sequence",
                                "Source Format",
                                "Aspect Ratio",
                                "media_date",
                                "take",
                                "source_medium",
                                "Manufacturer",
                                "CameraModel",
                                "stripv_width",
                                "stripv_height",
                                "reelid1",
                                "AudioInputSampleRate",
                                "director"};
    for (const char* const key : keys) {
        picture_->setConfig(key, "picture's");
        sound_->setConfig(key, "sound's");
    }
    const EditPtr made = byTime(sound_, picture_, 0, 0);
    std::string taken;
    for (const char* const key : keys)
        taken += made->getConfig(key).value_or("-").front();
    EXPECT_EQ(taken, "pppppppppppppppppppppppppss-");
}

TEST_F(SyncUpBuild, MixesEachChannelAsItsShotDoes) {
    const EditModifier camera = makeShot({"00:00:10:00", kFrames}, 1, 1, L"Camera");
    Aud::SimpleMixState recorded(2), own(1);
    ASSERT_TRUE(recorded.setInputPan(1, 1) && recorded.setMixLevel(0, 0.5F));
    ASSERT_TRUE(own.setInputLevel(0, 0.25F) && own.setInputRoutedToMix(0, 3, true));
    Aud::SimpleMixState both = recorded, alone(3);
    for (Aud::SimpleMixState* const mix : {&both, &alone})
        ASSERT_TRUE(mix->setInputLevel(2, 0.25F) && mix->setInputRoutedToMix(2, 3, true));
    const auto mixOf = [&](bool allChannels) {
        const EditPtr made(
            synchup_general_build_edit(sound_.getCookie(), camera.getCookie(), 0, {}, allChannels));
        return made->getAudioMix() ? *made->getAudioMix() : Aud::SimpleMixState();
    };
    camera->setAudioMix(Kv::makePtr<Aud::SimpleMixState>(own));
    EXPECT_TRUE(mixOf(true) == alone);
    sound_->setAudioMix(Kv::makePtr<Aud::SimpleMixState>(recorded));
    EXPECT_TRUE(mixOf(true) == both);
    EXPECT_TRUE(mixOf(false) == recorded);
    camera->setAudioMix({});
    EXPECT_TRUE(mixOf(true) == recorded);
}

TEST_F(SyncUpBuild, LeavesNothingBehindWhenItFails) {
    const EditModifier empty = makeEdit(1, 0);
    const std::size_t before = edits();
    const struct {
        EditPtr first, second;
        double t1, t2;
        const char* message;
    } rows[] = {
        {sound_, picture_, 0, 4, kSyncNoOverlap},
        {sound_, picture_, kNoTime, kNoTime, kSyncNoOverlap},
        {sound_, picture_, 0, std::numeric_limits<double>::quiet_NaN(), kSyncNoOverlap},
        {sound_, picture_, 0, 1e30, kSyncNoOverlap},
        {sound_, picture_, 0, 3.97, kSyncNoOverlap}, // no whole frame
        {sound_, empty, 0, 0, kSyncNoOverlap},
        {sound_, EditPtr(), 0, 0, kSyncNoShots},
        {sound_, sound_, 0, 0, kSyncNoOverlap}, // no picture to join
        {picture_, picture_, 0, 0, kSyncNoOverlap},
    };
    for (const auto& row : rows) {
        setCopyLog("none");
        EXPECT_FALSE(byTime(row.first, row.second, row.t1, row.t2)) << row.t2;
        EXPECT_STREQ(edcopy_get_log(), row.message);
    }
    EXPECT_EQ(edits(), before);
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(SyncUpBuild, MatchesManyAsComparingEachWithEachWould) {
    std::mt19937 random(7);
    const auto below = [&](int limit) { return static_cast<int>(random() % unsigned(limit)); };
    std::vector<EditModifier> shots;
    CookieVec pictures, sounds;
    for (int i = 0; i < 60; ++i) {
        const std::string start = "00:" + std::to_string(10 + below(20)) + ":00:00";
        Take take{below(10) == 0 ? "" : start.c_str(), 1 + below(5000)};
        take.type = below(8) == 0 ? kLabelAudioTimecode : kLabelVideoTimecode;
        take.date = below(5) == 0 ? "1 May" : "2 May";
        shots.push_back(i % 2 ? makePicture(take) : makeSound(take));
        (i % 2 ? pictures : sounds).push_back(shots.back().getCookie());
    }
    // How much of the picture a sound covers; negative when it does not go with it.
    const auto covered = [&](const Cookie& sound, const Cookie& picture) {
        const double offset =
            synchup_get_CELtime_offset(sound, kChanAudio, picture, kChanVideo, {});
        const double end =
            std::min(EditPtr(sound)->getEndTime() + offset, EditPtr(picture)->getEndTime());
        return offset == kNoTime ? -1 : end - std::max(offset, 0.0);
    };
    int matched = 0;
    for (const SyncMatch& match : matchSounds(pictures, sounds, {})) {
        double most = -1;
        for (const Cookie& sound : sounds)
            most = std::max(most, covered(sound, match.picture));
        EXPECT_EQ(match.sound.valid(), most >= 0);
        EXPECT_EQ(match.offset.refusal == nullptr, match.sound.valid());
        if (match.sound.valid()) {
            ++matched;
            EXPECT_DOUBLE_EQ(covered(match.sound, match.picture), most);
        }
    }
    EXPECT_GT(matched, 10);
}
