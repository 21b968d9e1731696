#include "editops/SyncUp.h"

#include "editops/CopyLog.h"
#include "editops/SyncUpMatch.h"
#include "platform/store/Effects.h"
#include "tests/editops/Shots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;

namespace {

class SyncUpBuild : public ShotsFixture {
protected:
    static EditPtr byTime(const EditPtr& first, const EditPtr& second, double t1, double t2,
                          const synchup_params& params = {}) {
        return EditPtr(
            synchup_cookies_by_time(first.getCookie(), second.getCookie(), t1, t2, params));
    }
    static std::string labelAt(const EditPtr& edit, const MediumRoll& roll) {
        return edit->getLabel(kLabelVideoTimecode, roll).pointAt(0).removePadding();
    }
};

Take seconds(int length, const char* start = "00:00:10:00") { return {start, 25 * length}; }

struct SpanRow {
    const char* name;
    double t1, t2; // of the sound, of the picture
    int startRule, endRule;
    std::pair<double, double> part; // {0, -1}: all
    const char *picture, *sound;
};
class SyncUpSpan : public SyncUpBuild, public testing::WithParamInterface<SpanRow> {};

constexpr std::pair<double, double> kAll{0, -1};

} // namespace

TEST_F(SyncUpBuild, JoinsPictureAndSoundByTheirLabels) {
    const EditModifier sound = makeSound(seconds(60, "00:00:10:00"));
    const EditModifier picture = makePicture(seconds(60, "00:00:12:00"));
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
    EXPECT_TRUE(made->checkConsistency().empty());
    // What was made is in sync with its sound by its own labels.
    EXPECT_EQ(
        synchup_get_CELtime_offset(sound.getCookie(), kChanAudio, made.getCookie(), kChanVideo, {}),
        -2);
}

TEST_F(SyncUpBuild, KeepsThePicturesLabelWhereBothRulesNameOne) {
    const EditModifier sound = makeSound(seconds(60, "00:00:10:00"));
    const EditModifier picture = makePicture(seconds(60, "00:00:12:00"));
    synchup_params params;
    EXPECT_EQ(labelAt(byTime(sound, picture, 0, 0, params), kSoundRoll), "00:00:10:00");
    params.soundLabel = params.pictureLabel;
    EXPECT_EQ(labelAt(byTime(sound, picture, 0, 0, params), kPictureRoll), "00:00:12:00");
}

TEST_P(SyncUpSpan, IsCoveredByEveryChannel) {
    const SpanRow& row = GetParam();
    synchup_params params;
    params.startRule = row.startRule;
    params.endRule = row.endRule;
    params.part = row.part != kAll;
    params.partStart = row.part.first;
    params.partEnd = row.part.second;
    const EditModifier sound = makeSound(seconds(4)), picture = makePicture(seconds(4));
    picture->setConfig("BACKUP_MARK1", 1.0);
    for (const bool turned : {false, true}) { // which shot comes first plays no part
        const EditPtr made = turned ? byTime(picture, sound, row.t2, row.t1, params)
                                    : byTime(sound, picture, row.t1, row.t2, params);
        ASSERT_TRUE(made);
        EXPECT_EQ(piecesOf(made, kChanVideo), row.picture);
        EXPECT_EQ(piecesOf(made, kChanAudio), row.sound);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SyncUpSpan,
    testing::Values(
        SpanRow{"Common", 0, 1, 1, 1, kAll, "Picture@25+75", "Sound@0+75"},
        SpanRow{"SoundFirst", 1, 0, 1, 1, kAll, "Picture@0+75", "Sound@25+75"},
        SpanRow{"Picture", 0, 1, 0, 0, kAll, "Picture@0+100", "-@0+25 Sound@0+75"},
        SpanRow{"Sound", 0, 1, 3, 3, kAll, "Picture@25+75 -@0+25", "Sound@0+100"},
        SpanRow{"Union", 0, 1, 2, 2, kAll, "Picture@0+100 -@0+25", "-@0+25 Sound@0+100"},
        SpanRow{"UnionSoundFirst", 1, 0, 2, 2, kAll, "-@0+25 Picture@0+100", "Sound@0+100 -@0+25"},
        SpanRow{"Apart", 0, 5, 2, 2, kAll, "Picture@0+100 -@0+125", "-@0+125 Sound@0+100"},
        SpanRow{"PictureApart", 0, 5, 0, 0, kAll, "Picture@0+100", "-@0+100"},
        SpanRow{"SoundApart", 0, -5, 3, 3, kAll, "-@0+100", "Sound@0+100"},
        SpanRow{"Part", 0, 1, 0, 0, {2, 3}, "Picture@50+25", "Sound@25+25"},
        SpanRow{"PartByMarks", 0, 0.2, 1, 1, {0, 0}, "Picture@25+75", "Sound@20+75"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(SyncUpBuild, KeepsSoundBetweenFramesInSync) {
    const EditModifier sound = makeSound(seconds(4)), picture = makePicture(seconds(4));
    CelSegment half = sound->get_edit_cel_p(0)->getSegment(0);
    half.end = toFlicks(1.99); // cuts off the frame, at the start, inside and at the end
    CelSegment rest = half;
    rest.start = half.end;
    rest.end = toFlicks(3.99);
    rest.stripStart = toFlicks(100);
    rest.speed = 2;
    ASSERT_TRUE(sound->get_edit_cel_p(0)->setSegments({half, rest}));
    synchup_params params;
    params.startRule = params.endRule = kSyncPicture;
    const EditPtr made = byTime(sound, picture, 0, 0.99 - 1, params);
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

TEST_F(SyncUpBuild, TakesWhatDescribesTheShots) {
    const EditModifier sound = makeSound(seconds(4)), picture = makePicture(seconds(4));
    for (const EditModifier& shot : {sound, picture}) {
        for (const char* key : {"scene", "reelid", "CameraModel", "stripv_width", "reelid1",
                                "AudioInputSampleRate", "other"})
            shot->setConfig(key, LightweightString<char>(shot == picture ? "picture" : "sound"));
        shot->setVideoMetadata(shot == picture ? "{\"p\":1}" : "{\"s\":1}");
        shot->setAudioMetadata(shot == picture ? "{\"p\":2}" : "{\"s\":2}");
        shot->addCue(Cue(0.5, L"early"));
        shot->addCue(Cue(TimeRange(2, 3), shot == picture ? L"board" : L"clap"));
    }
    sound->groupChannels(sound->getChans(kChanAudio), true);
    const EditPtr made = byTime(sound, picture, 0, 1);
    ASSERT_TRUE(made);
    for (const char* key : {"scene", "reelid", "CameraModel", "stripv_width"})
        EXPECT_EQ(made->getConfig(key), "picture") << key;
    for (const char* key : {"reelid1", "AudioInputSampleRate"})
        EXPECT_EQ(made->getConfig(key), "sound") << key;
    EXPECT_FALSE(made->getConfig("other"));
    EXPECT_EQ(made->getVideoMetadata(), "{\"p\":1}");
    EXPECT_EQ(made->getAudioMetadata(), "{\"s\":2}");
    std::vector<std::pair<std::wstring, double>> cues;
    const CueList list = made->getCues();
    for (const Cue& cue : list.cues())
        cues.emplace_back(cue.getName(), cue.getTime());
    EXPECT_THAT(cues, ElementsAre(std::pair(std::wstring(L"early"), 0.5),
                                  std::pair(std::wstring(L"board"), 1.0),
                                  std::pair(std::wstring(L"clap"), 2.0)));
    ASSERT_EQ(made->openObjectInternal()->size(), 1u);
    EXPECT_EQ(made->openObjectInternal()->getGroupContents(0), made->getChans(kChanAudio));
}

TEST_F(SyncUpBuild, TakesBothEyesLevelsAndEffects) {
    const EditModifier sound = makeSound(seconds(4)), picture = makePicture(seconds(4));
    const IdStamp right = picture->addChan(kChanVideo, kSubStereoRight);
    picture->set_edit_cel_p(right, *picture->get_edit_cel_p(0));
    const Kv::Ptr<Cel> eye = picture->get_edit_cel_p(right);
    ChannelEvent point = eye->get_event(0);
    EffectGraph graph;
    graph.name = L"Grade";
    point.effectGraph = picture->setEffectGraph(graph);
    ASSERT_TRUE(eye->setEvent(0, point));
    const IdStamp levels = sound->addLevelsChan(sound->getChans(kChanAudio)[0]);
    ASSERT_TRUE(sound->setLevelNodes(levels, {{0, 1.0F}, {toFlicks(4), 0.0F}}));

    const EditPtr made = byTime(sound, picture, 1, 0);
    ASSERT_TRUE(made);
    const auto eyes = made->getChans(kChanVideo);
    ASSERT_EQ(eyes.size(), 2u);
    EXPECT_EQ(made->getChanSubtype(eyes[1]), kSubStereoRight);
    ASSERT_EQ(made->openObjectInternal()->size(), 1u);
    EXPECT_EQ(made->openObjectInternal()->getGroupContents(0), eyes);
    const auto brought =
        made->getEffectGraph(made->get_edit_cel_p(eyes[1])->get_event(0).effectGraph);
    ASSERT_TRUE(brought);
    EXPECT_EQ(brought->name, L"Grade");
    const LevelNodes nodes =
        made->getLevelNodes(made->getLevelsChan(made->getChans(kChanAudio)[0]));
    ASSERT_EQ(nodes.size(), 2u);
    EXPECT_EQ(nodes[0].time, 0);
    EXPECT_FLOAT_EQ(nodes[0].gain, 0.75F);
    EXPECT_EQ(nodes[1].time, toFlicks(3));
}

TEST_F(SyncUpBuild, JoinsAllChannelsOfShotsOfAnyKind) {
    const EditModifier recorder = makeSound(seconds(4));
    const EditModifier camera = makeShot(seconds(4), 1, 1, L"Camera");
    recorder->addCue(Cue(2, L"clap"));
    synchup_params params;
    params.makeGhost = false;
    params.part = true; // plays no part by time
    params.partStart = 50;
    const EditPtr made(
        synchup_general_cookies_by_time(recorder.getCookie(), camera.getCookie(), 0, 1, params));
    ASSERT_TRUE(made);
    EXPECT_EQ(piecesOf(made, kChanVideo), "Camera@25+75");
    EXPECT_EQ(piecesOf(made, kChanAudio, 0), "Sound@0+75");
    EXPECT_EQ(piecesOf(made, kChanAudio, 2), "Camera@25+75");
    EXPECT_EQ(made->getLogType(), kLogTypeEdit);
    EXPECT_EQ(made->getConfig("IS_DUPE"), "0");
    EXPECT_EQ(made->getName(), L"Camera (Sync)");
    EXPECT_EQ(made->getCues().getNumCuePoints(), 0u);
    const EditPtr plain(synchup_general_build_edit(recorder.getCookie(), camera.getCookie(), 1,
                                                   synchup_params(), false));
    EXPECT_EQ(plain->getNumChans(), 3);
    const EditPtr sounds(synchup_general_cookies_by_label(
        recorder.getCookie(), kChanAudio, makeSound(seconds(4)).getCookie(), kChanAudio, {}));
    EXPECT_EQ(sounds->getNumChans(kChanAudio), 4);
}

TEST_F(SyncUpBuild, LeavesNothingBehindWhenItFails) {
    const EditModifier sound = makeSound(seconds(4)), picture = makePicture(seconds(4));
    const EditModifier empty = makeEdit(1, 0);
    const std::size_t before = edits();
    const struct {
        EditPtr first, second;
        double t1, t2;
        const char* message;
    } rows[] = {
        {sound, picture, 0, 4, kSyncNoOverlap},
        {sound, picture, kNoTime, kNoTime, kSyncNoOverlap},
        {sound, picture, 0, std::numeric_limits<double>::quiet_NaN(), kSyncNoOverlap},
        {sound, picture, 0, 1e30, kSyncNoOverlap},
        {sound, picture, 0, 3.97, kSyncNoOverlap}, // no whole frame
        {sound, empty, 0, 0, kSyncNoOverlap},
        {sound, EditPtr(), 0, 0, kSyncNoShots},
        {sound, sound, 0, 0, kSyncNoOverlap}, // no picture to join
        {picture, picture, 0, 0, kSyncNoOverlap},
    };
    for (const auto& row : rows) {
        setCopyLog("none");
        EXPECT_FALSE(byTime(row.first, row.second, row.t1, row.t2)) << row.t2;
        EXPECT_STREQ(edcopy_get_log(), row.message);
    }
    setCopyLog("none");
    EXPECT_FALSE(
        synchup_cookies_by_label(sound.getCookie(), kChanAudio, empty.getCookie(), kChanVideo, {})
            .valid());
    EXPECT_STREQ(edcopy_get_log(), kSyncNoLabels);
    EXPECT_EQ(edits(), before);
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(SyncUpBuild, MatchesManyAsComparingEachWithEachWould) {
    std::mt19937 random(7);
    const auto below = [&](int limit) { return static_cast<int>(random() % unsigned(limit)); };
    std::vector<EditModifier> shots;
    CookieVec pictures, sounds;
    for (int i = 0; i < 60; ++i) {
        Take take;
        const std::string start = "00:" + std::to_string(10 + below(20)) + ":00:00";
        take.start = below(10) == 0 ? "" : start.c_str();
        take.frames = 1 + below(5000);
        take.type = below(8) == 0 ? kLabelAudioTimecode : kLabelVideoTimecode;
        take.date = below(5) == 0 ? "1 May" : "2 May";
        shots.push_back(i % 2 ? makePicture(take) : makeSound(take));
        (i % 2 ? pictures : sounds).push_back(shots.back().getCookie());
    }
    const synchup_params params;
    // How much of the picture a sound covers; negative when it does not go with it.
    const auto covered = [&](const Cookie& sound, const Cookie& picture) {
        const double offset =
            synchup_get_CELtime_offset(sound, kChanAudio, picture, kChanVideo, params);
        return offset == kNoTime ? -1
                                 : std::min(EditPtr(sound)->getEndTime() + offset,
                                            EditPtr(picture)->getEndTime()) -
                                       std::max(offset, 0.0);
    };
    int matched = 0;
    for (const SyncMatch& match : matchSounds(pictures, sounds, params)) {
        double most = -1;
        for (const Cookie& sound : sounds)
            most = std::max(most, covered(sound, match.picture));
        EXPECT_EQ(match.sound.valid(), most >= 0);
        EXPECT_EQ(match.offset.refusal == nullptr, match.sound.valid());
        if (!match.sound.valid())
            continue;
        ++matched;
        EXPECT_DOUBLE_EQ(covered(match.sound, match.picture), most);
    }
    EXPECT_GT(matched, 10);
}
