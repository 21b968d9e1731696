#include "editops/SyncUp.h"

#include "editops/CopyLog.h"
#include "platform/prefs/Configuration.h"
#include "tests/editops/Shots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutroom;
using namespace cutroom::test;

namespace {

class SyncUp : public ShotsFixture {
protected:
    static double offset(const EditPtr& sound, const EditPtr& picture,
                         const synchup_params& params = {}) {
        return synchup_get_CELtime_offset(sound.getCookie(), kChanAudio, picture.getCookie(),
                                          kChanVideo, params);
    }
};

const Kv::FrameRate kNtsc(30000, 1001);

Take typed(int type) {
    Take take;
    take.type = type;
    return take;
}
Take dated(const char* date, eLogType logType = kLogTypeSource) {
    Take take;
    take.date = date;
    take.logType = logType;
    return take;
}

} // namespace

TEST_F(SyncUp, AnOffsetIsTheDifferenceOfTheLabelsOrRefused) {
    const struct {
        const char* name;
        Take sound, picture;
        double offset; // kNoTime: refused, with
        const char* message = "";
    } rows[] = {
        {"SoundEarlier", {"00:00:10:00"}, {"00:00:12:00"}, -2},
        {"SoundLater", {"00:00:12:00"}, {"00:00:10:00"}, 2},
        {"Apart", {"00:01:20:00"}, {"00:00:10:00"}, kNoTime, kSyncNoOverlap},
        {"Touching", {"00:01:10:00"}, {"00:00:10:00"}, kNoTime, kSyncNoOverlap},
        {"TouchingBefore", {"00:00:10:00"}, {"00:01:10:00"}, kNoTime, kSyncNoOverlap},
        {"OneFrameInCommon", {"00:01:09:24"}, {"00:00:10:00"}, 59.96},
        {"NoSoundLabel", {""}, {}, kNoTime, kSyncNoLabels},
        {"NoPictureLabel", {}, {""}, kNoTime, kSyncNoLabels},
        {"OtherRate", {"00:00:10:12", 1500, Kv::FrameRate(24)}, {"00:00:10:00"}, 0.5},
        // Drop-frame counting skips 108 labels in an hour; the time is the same.
        {"DropFrameAgainstNonDrop",
         {"01:00:00;00", 9000, kNtsc, true},
         {"00:59:56:12", 9000, kNtsc},
         0},
        {"DropFrameMinute",
         {"00:01:00;02", 9000, kNtsc, true},
         {"00:00:59;29", 9000, kNtsc, true},
         1001.0 / 30000},
        {"SixAndEight", typed(6), typed(8), 0},
        {"SevenAndEight", typed(7), typed(8), 0},
        {"EightAndSix", typed(8), typed(6), kNoTime, kSyncTypes},
        {"SixAndSeven", typed(6), typed(7), kNoTime, kSyncTypes},
        {"FourAndFour", typed(4), typed(4), 0},
        {"OtherDates", dated("1 May"), dated("2 May"), kNoTime, kSyncDates},
        {"DatesButForCase", dated("1 MAY"), dated("1 may"), 0},
        {"OneDate", dated("1 May"), dated(""), 0},
        {"TheOtherDate", dated(""), dated("1 May"), 0},
        {"DatesOfNoSource", dated("1 May"), dated("2 May", kLogTypeSubclip), 0},
        {"DatesOfNoSourceEither", dated("1 May", kLogTypeSubclip), dated("2 May"), 0},
    };
    for (const auto& row : rows) {
        synchup_params params;
        params.soundLabel.type = row.sound.type;
        params.pictureLabel.type = row.picture.type;
        const double seconds = offset(makeSound(row.sound), makePicture(row.picture), params);
        EXPECT_NEAR(seconds, row.offset, row.offset == kNoTime ? 0 : 1e-9) << row.name;
        if (seconds == kNoTime) {
            EXPECT_STREQ(edcopy_get_log(), row.message) << row.name;
        }
    }
}

TEST_F(SyncUp, IsLenientWhereToldTo) {
    Configuration::instance().set("allow_sync_of_incompatible_labels", "1");
    synchup_params params;
    params.soundLabel.type = 8;
    params.dateCheckOff = true;
    Take sound = typed(8);
    sound.date = "1 May";
    EXPECT_EQ(offset(makeSound(sound), makePicture(dated("2 May")), params), 0);
}

TEST_F(SyncUp, NeedsShotsThatOpenOrTheirStrips) {
    const Cookie sound = makeSound().getCookie(), strip = convertCookie(sound, 'S', 1);
    EXPECT_EQ(synchup_get_CELtime_offset(strip, kChanAudio, sound, kChanAudio, {}), 0);
    EXPECT_EQ(synchup_get_CELtime_offset(sound, kChanAudio, Cookie('E', 9), kChanVideo, {}),
              kNoTime);
    EXPECT_STREQ(edcopy_get_log(), kSyncNoShots);
}

TEST_F(SyncUp, ShiftsTheLabelsOfOneKindOfShot) {
    const std::tuple<int, EditChanType, EditChanType, int> rows[] = {
        {3, kChanAudio, kChanVideo, 3},      {-3, kChanAudio, kChanVideo, -3},
        {3, kChanVideo, kChanAudio, -3},     {-3, kChanVideo, kChanAudio, 3},
        {3, kChanAudio, kChanAudio, 0},      {3, kChanSubtitle, kChanVideo, 3},
        {-3, kChanAudio, kChanSubtitle, -3},
    };
    const Cookie a = makeSound().getCookie(), b = makeSound().getCookie();
    for (const auto& [soundOffset, first, second, frames] : rows) {
        synchup_params params;
        params.soundOffset = soundOffset;
        EXPECT_NEAR(synchup_get_CELtime_offset(a, first, b, second, params), frames / 25.0, 1e-9)
            << soundOffset << ' ' << first << ' ' << second;
    }
}

TEST_F(SyncUp, FindsLabelsThroughTheMaterial) {
    const auto lay = [](const EditPtr& edit, const Cookie& material, int stripFrame, int atFrame) {
        CelSegment piece;
        piece.start = kPal.frameToFlicks(atFrame);
        piece.end = kPal.frameToFlicks(atFrame + 100);
        piece.stripStart = kPal.frameToFlicks(stripFrame);
        piece.material = material;
        EXPECT_TRUE(edit->get_edit_cel_p(0)->setSegments({piece}));
        return edit;
    };
    const auto unlabelled = [] { return makePicture({"", 100, kPal, false, 3, kLogTypeEdit}); };
    const auto strip = [](const EditPtr& edit) { return convertCookie(edit.getCookie(), 'V', 1); };
    const EditModifier sound = makeSound({"00:00:20:00"}), source = makePicture({"00:00:20:00"});
    const EditPtr once = lay(unlabelled(), strip(source), 50, 25);
    EXPECT_NEAR(offset(sound, once), -1, 1e-9); // 2 s into the material, 1 s into the edit
    EXPECT_NEAR(offset(sound, lay(unlabelled(), strip(once), 75, 0)), -4, 1e-9);
    // A log whose material begins at its own timecode.
    const EditPtr late = lay(makePicture({"00:00:20:00"}), materialOf(L"late"), 500, 0);
    EXPECT_NEAR(offset(sound, lay(unlabelled(), strip(late), 550, 0)), -2, 1e-9);

    const EditModifier circle = unlabelled();
    lay(circle, strip(circle), 0, 0);
    for (const EditPtr& none : {lay(unlabelled(), strip(makePicture({""})), 0, 0),
                                lay(makePicture({"", 100}), strip(source), 0, 0), // a source itself
                                lay(unlabelled(), materialOf(L"gone"), 0, 0),
                                lay(unlabelled(), Cookie(), 0, 0), EditPtr(circle)}) {
        EXPECT_EQ(offset(sound, none), kNoTime);
        EXPECT_STREQ(edcopy_get_log(), kSyncNoLabels);
    }
}

TEST_F(SyncUp, ReadsItsRulesFromAConfiguration) {
    synchup_params all;
    all.startRule = 2;
    all.endRule = -1;
    all.part = true;
    all.pictureLabel = {6, {7, 8}};
    all.soundLabel = {1, {-2, 3}};
    all.soundOffset = -5;
    all.dateCheckOff = true;
    all.makeGhost = false;
    const configb::Entries full = {{"synchup_startrule", "2"},     {"synchup_endrule", "-1"},
                                   {"synchup_part", "7"},          {"synchup_pixlabel", "6.7.8"},
                                   {"synchup_sndlabel", "1.-2.3"}, {"synchup_sndoffset", "-5"},
                                   {"synchup_ignoredate", "0"},    {"synchup_makeghost", "0"}};
    configb config;
    EXPECT_TRUE(synchup_params(config) == synchup_params());
    for (const auto& [key, value] : full)
        config.set(key, value);
    EXPECT_TRUE(synchup_params(config) == all);
    config.set("synchup_ignoredate", "1");
    EXPECT_FALSE(synchup_params(config).dateCheckOff);
    for (const char* malformed : {"", "x", "1.5", "3.2", "3.4.1.1"}) {
        for (const auto& [key, value] : full)
            config.set(key, malformed);
        EXPECT_TRUE(synchup_params(config) == synchup_params()) << malformed;
    }
    config.set("synchup_startrule", "99999999999");
    EXPECT_EQ(synchup_params(config).startRule, kSyncCommon);
    EXPECT_EQ(all.pictureLabel.asString(), "6.7.8");
}
