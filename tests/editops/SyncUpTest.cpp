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

struct OffsetRow {
    const char* name;
    Take sound, picture;
    double offset; // kNoTime: refused, with
    const char* message = "";
};
class SyncUpOffset : public SyncUp, public testing::WithParamInterface<OffsetRow> {};

const Kv::FrameRate kNtsc(30000, 1001);

// A label of another type.
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

TEST_P(SyncUpOffset, IsTheDifferenceOfTheLabelsOrRefused) {
    const EditModifier sound = makeSound(GetParam().sound);
    const EditModifier picture = makePicture(GetParam().picture);
    synchup_params params;
    params.soundLabel.type = GetParam().sound.type;
    params.pictureLabel.type = GetParam().picture.type;
    const double seconds = offset(sound, picture, params);
    EXPECT_NEAR(seconds, GetParam().offset, GetParam().offset == kNoTime ? 0 : 1e-9);
    if (seconds == kNoTime) {
        EXPECT_STREQ(edcopy_get_log(), GetParam().message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SyncUpOffset,
    testing::Values(
        OffsetRow{"SoundEarlier", {"00:00:10:00"}, {"00:00:12:00"}, -2},
        OffsetRow{"SoundLater", {"00:00:12:00"}, {"00:00:10:00"}, 2},
        OffsetRow{"Same", {"00:00:12:00"}, {"00:00:12:00"}, 0},
        OffsetRow{"Apart", {"00:01:20:00"}, {"00:00:10:00"}, kNoTime, kSyncNoOverlap},
        OffsetRow{"Touching", {"00:01:10:00"}, {"00:00:10:00"}, kNoTime, kSyncNoOverlap},
        OffsetRow{"OneFrameInCommon", {"00:01:09:24"}, {"00:00:10:00"}, 59.96},
        OffsetRow{"NoSoundLabel", {""}, {}, kNoTime, kSyncNoLabels},
        OffsetRow{"NoPictureLabel", {}, {""}, kNoTime, kSyncNoLabels},
        OffsetRow{"OtherRate", {"00:00:10:12", 1500, Kv::FrameRate(24)}, {"00:00:10:00"}, 0.5},
        // The hour of drop-frame labels is 108 frames shorter in number, not in time.
        OffsetRow{"DropFrameAgainstNonDrop",
                  {"01:00:00;00", 9000, kNtsc, true},
                  {"00:59:56:12", 9000, kNtsc},
                  0},
        OffsetRow{"DropFrameMinute",
                  {"00:01:00;02", 9000, kNtsc, true},
                  {"00:00:59;29", 9000, kNtsc, true},
                  1001.0 / 30000},
        OffsetRow{"SixAndEight", typed(6), typed(8), 0},
        OffsetRow{"SevenAndEight", typed(7), typed(8), 0},
        OffsetRow{"EightAndSix", typed(8), typed(6), kNoTime, kSyncTypes},
        OffsetRow{"SixAndSeven", typed(6), typed(7), kNoTime, kSyncTypes},
        OffsetRow{"ThreeAndFour", typed(3), typed(4), kNoTime, kSyncTypes},
        OffsetRow{"FourAndFour", typed(4), typed(4), 0},
        OffsetRow{"OtherDates", dated("1 May"), dated("2 May"), kNoTime, kSyncDates},
        OffsetRow{"DatesButForCase", dated("1 MAY"), dated("1 may"), 0},
        OffsetRow{"OneDate", dated("1 May"), dated(""), 0},
        OffsetRow{"DatesOfNoSource", dated("1 May"), dated("2 May", kLogTypeSubclip), 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(SyncUp, IsLenientWhereToldTo) {
    Configuration::instance().set("allow_sync_of_incompatible_labels", "1");
    synchup_params params;
    params.soundLabel.type = 8;
    EXPECT_EQ(offset(makeSound(typed(8)), makePicture(), params), 0);
    params = {};
    params.dateCheckOff = true;
    EXPECT_EQ(offset(makeSound(dated("1")), makePicture(dated("2")), params), 0);
}

TEST_F(SyncUp, NeedsShotsThatOpen) {
    const EditModifier sound = makeSound();
    const Cookie missing = Cookie::make('E');
    EXPECT_EQ(synchup_get_CELtime_offset(sound.getCookie(), kChanAudio, missing, kChanVideo, {}),
              kNoTime);
    EXPECT_STREQ(edcopy_get_log(), kSyncNoShots);
    EXPECT_FALSE(synchup_cookies_by_time(missing, sound.getCookie(), 0, 0, {}).valid());
    EXPECT_STREQ(edcopy_get_log(), kSyncNoShots);
    // A strip's cookie names its shot.
    const Cookie strip = convertCookie(sound.getCookie(), 'S', 1);
    EXPECT_EQ(synchup_get_CELtime_offset(strip, kChanAudio, sound.getCookie(), kChanAudio, {}), 0);
}

TEST_F(SyncUp, ShiftsTheLabelsOfOneKindOfShot) {
    const struct {
        int soundOffset;
        EditChanType first, second;
        double frames;
    } rows[] = {
        {3, kChanAudio, kChanVideo, 3},      {-3, kChanAudio, kChanVideo, -3},
        {3, kChanVideo, kChanAudio, -3},     {-3, kChanVideo, kChanAudio, 3},
        {3, kChanAudio, kChanAudio, 0},      {3, kChanSubtitle, kChanVideo, 3},
        {-3, kChanAudio, kChanSubtitle, -3},
    };
    const Cookie a = makeSound().getCookie(), b = makeSound().getCookie();
    for (const auto& row : rows) {
        synchup_params params;
        params.soundOffset = row.soundOffset;
        EXPECT_NEAR(synchup_get_CELtime_offset(a, row.first, b, row.second, params),
                    row.frames / 25, 1e-9)
            << row.soundOffset << ' ' << row.first << ' ' << row.second;
    }
}

TEST_F(SyncUp, FindsLabelsThroughTheMaterial) {
    const EditModifier source = makePicture({"00:00:20:00"});
    const auto cut = [](const Cookie& material, int stripFrame, int atFrame) {
        EditModifier edit = makePicture({"", 100, kPal, false, 3, kLogTypeEdit}, L"Cut");
        CelSegment piece;
        piece.start = kPal.frameToFlicks(atFrame);
        piece.end = kPal.frameToFlicks(atFrame + 100);
        piece.stripStart = kPal.frameToFlicks(stripFrame);
        piece.material = material;
        EXPECT_TRUE(edit->get_edit_cel_p(0)->setSegments({piece}));
        return edit;
    };
    const auto strip = [](const EditPtr& edit) { return convertCookie(edit.getCookie(), 'V', 1); };
    const EditModifier sound = makeSound({"00:00:20:00"});
    const EditModifier once = cut(strip(source), 50, 25);
    EXPECT_NEAR(offset(sound, once), -1, 1e-9); // 2 s into the material, 1 s into the edit
    EXPECT_NEAR(offset(sound, cut(strip(once), 75, 0)), -4, 1e-9);
    // A log whose material begins at its own timecode.
    const EditModifier late = makePicture({"00:00:20:00"});
    CelSegment piece = late->get_edit_cel_p(0)->getSegment(0);
    piece.stripStart = kPal.frameToFlicks(500);
    ASSERT_TRUE(late->get_edit_cel_p(0)->setSegments({piece}));
    EXPECT_NEAR(offset(sound, cut(strip(late), 550, 0)), -2, 1e-9);

    const EditModifier circle = cut(Cookie(), 0, 0);
    CelSegment self = circle->get_edit_cel_p(0)->getSegment(0);
    self.material = strip(circle);
    ASSERT_TRUE(circle->get_edit_cel_p(0)->setSegments({self}));
    for (const EditPtr& none :
         {EditPtr(cut(strip(makePicture({""})), 0, 0)), EditPtr(cut(materialOf(L"gone"), 0, 0)),
          EditPtr(cut(Cookie(), 0, 0)), EditPtr(circle)}) {
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
    const configb::Entries malformed = {{"synchup_startrule", "x"},
                                        {"synchup_endrule", "99999999999"},
                                        {"synchup_part", ""},
                                        {"synchup_pixlabel", "3.2"},
                                        {"synchup_sndlabel", "3.4.1.1"},
                                        {"synchup_sndoffset", "1.5"},
                                        {"synchup_ignoredate", "no"},
                                        {"synchup_makeghost", "off"}};
    const std::pair<configb::Entries, synchup_params> rows[] = {
        {full, all}, {malformed, {}}, {{}, {}}, {{{"synchup_ignoredate", "1"}}, {}}};
    for (const auto& [entries, expected] : rows) {
        configb config;
        for (const auto& [key, value] : entries)
            config.set(key, value);
        EXPECT_TRUE(synchup_params(config) == expected) << entries.size();
    }
    all.init();
    EXPECT_TRUE(all == synchup_params());
    EXPECT_EQ(all.pictureLabel.asString(), "3.2.1");
    EXPECT_EQ(UserLabelSpec::fromString("3.4.1"), all.soundLabel);
}

TEST_F(SyncUp, ChoosesTheSpanByItsRules) {
    const TimeRange picture(10, 20), sound(5, 15), nothing(0, 0);
    const struct {
        int start, end;
        std::optional<TimeRange> part;
        TimeRange span; // `nothing`: none
    } rows[] = {
        {kSyncPicture, kSyncPicture, {}, {10, 20}},
        {kSyncCommon, kSyncCommon, {}, {10, 15}},
        {kSyncUnion, kSyncUnion, {}, {5, 20}},
        {kSyncSound, kSyncSound, {}, {5, 15}},
        {kSyncSound, kSyncPicture, {}, {5, 20}},
        {99, -7, {}, {10, 15}},
        {kSyncUnion, kSyncUnion, TimeRange(12, 30), {12, 20}},
        {kSyncCommon, kSyncCommon, TimeRange(16, 18), nothing},
    };
    for (const auto& row : rows) {
        synchup_params params;
        params.startRule = row.start;
        params.endRule = row.end;
        const auto span = syncSpan(picture, sound, params, row.part);
        EXPECT_EQ(span.value_or(nothing), row.span) << row.start << ' ' << row.end;
    }
    EXPECT_FALSE(syncSpan({0, 5}, {5, 9}, synchup_params()));
}
