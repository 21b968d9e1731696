#include "platform/base/Timecode.h"
#include "platform/base/FrameRate.h"
#include "platform/base/Strings.h"
#include "tests/support/Scale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdio>
#include <limits>

namespace cutroom {
namespace {

using Kv::FrameRate;

// A clock of labels that knows only how to go one frame on.
class LabelClock {
public:
    LabelClock(int labels, int dropped) : labels_(labels), dropped_(dropped) {}

    void advance() {
        if (++frame_ < labels_)
            return;
        frame_ = 0;
        if (++second_ < 60)
            return;
        second_ = 0;
        if (++minute_ == 60) {
            minute_ = 0;
            hour_ = (hour_ + 1) % 24;
        }
        if (minute_ % 10 != 0)
            frame_ = dropped_;
    }
    std::string text() const {
        char label[32];
        std::snprintf(label, sizeof label, "%02d:%02d:%02d%c%0*d", hour_ % 100, minute_ % 100,
                      second_ % 100, dropped_ ? ';' : ':', labels_ > 100 ? 3 : 2, frame_ % 1000);
        return label;
    }
    bool nearMinute() const { return second_ == 0 || second_ == 59; }
    bool atStart() const { return !hour_ && !minute_ && !second_ && !frame_; }

private:
    const int labels_;
    const int dropped_;
    int hour_ = 0;
    int minute_ = 0;
    int second_ = 0;
    int frame_ = 0;
};

struct DayRow {
    const char* name;
    FrameRate rate;
    bool dropFrame;
    int labels;
    int dropped;
};

class WholeDay : public testing::TestWithParam<DayRow> {};

TEST_P(WholeDay, EveryFrameHasTheLabelOfTheClock) {
    const DayRow& row = GetParam();
    const TimecodeFormat format{row.rate, row.dropFrame};
    LabelClock clock(row.labels, row.dropped);
    // Every frame around a change of minute, where drop-frame counting may go wrong, and one in
    // `others` of the rest.
    const long others = test::rounds(97, 1);
    std::int64_t frame = 0;
    do {
        if (clock.nearMinute() || frame % others == 0) {
            const std::string label = clock.text();
            if (timecodeText(frame, format) != label || parseTimecode(label, format) != frame)
                FAIL() << frame << " is " << label << ", not " << timecodeText(frame, format);
        }
        clock.advance();
        ++frame;
    } while (!clock.atStart());
    EXPECT_EQ(framesPerDay(format), frame);
    EXPECT_EQ(timecodeText(frame, format), timecodeText(0, format));
    EXPECT_EQ(timecodeText(-1, format), timecodeText(frame - 1, format));
}

INSTANTIATE_TEST_SUITE_P(
    Timecode, WholeDay,
    testing::Values(
        DayRow{"r23976", {24000, 1001}, false, 24, 0}, DayRow{"r24", 24, false, 24, 0},
        DayRow{"r25", 25, false, 25, 0}, DayRow{"r2997", {30000, 1001}, false, 30, 0},
        DayRow{"r2997drop", {30000, 1001}, true, 30, 2}, DayRow{"r30", 30, false, 30, 0},
        DayRow{"r30cannotDrop", 30, true, 30, 0}, DayRow{"r4795", {48000, 1001}, false, 48, 0},
        DayRow{"r48", 48, false, 48, 0}, DayRow{"r50", 50, false, 50, 0},
        DayRow{"r5994drop", {60000, 1001}, true, 60, 4}, DayRow{"r60", 60, false, 60, 0},
        DayRow{"r11988drop", {120000, 1001}, true, 120, 8}, DayRow{"r12", 12, false, 12, 0}),
    [](const auto& row) { return row.param.name; });

TEST(TimecodeTest, WithoutARateThereIsNone) {
    EXPECT_EQ(timecodeText(5, {FrameRate(), false}), "--:--:--:--");
    EXPECT_EQ(framesPerDay({FrameRate(), false}), 0);
    EXPECT_EQ(parseTimecode("00:00:00:00", {FrameRate(), false}), std::nullopt);
    EXPECT_EQ(timecodeText(std::numeric_limits<std::int64_t>::min(), {FrameRate(25), false}).size(),
              11u);
}

TEST(TimecodeTest, TheSeparatorMeansDropFrameWhereTheRateHasIt) {
    const FrameRate ntsc(30000, 1001);
    for (const char* text : {"01:00:00;00", "01:00:00.00", "01:00:00,00"}) {
        bool drop = false;
        EXPECT_EQ(parseTimecode(text, {ntsc, false}, &drop), 107892) << text;
        EXPECT_TRUE(drop);
        EXPECT_EQ(parseTimecode(text, {FrameRate(25), false}), 90000) << text;
    }
    bool drop = true;
    EXPECT_EQ(parseTimecode("01:00:00:00", {ntsc, true}, &drop), 107892);
    EXPECT_FALSE(drop);
    EXPECT_EQ(parseTimecode("24:00:00:00", {FrameRate(25), false}), 24 * 90000);
}

TEST(TimecodeTest, EverythingElseIsRefused) {
    const TimecodeFormat pal{FrameRate(25), false};
    for (const char* bad :
         {"", "01:00:00", "1:00:00:00", "01:00:00:0", "01:00:00:000", "01:60:00:00", "01:00:60:00",
          "01:00:00:25", "01:00:00:-1", "01;00;00;00", "01:00:00:00 ", " 1:00:00:00", "01:00:00/00",
          "-1:00:00:00", "01:00:00:0a", "01:00:00:0000", "--:--:--:--"})
        EXPECT_EQ(parseTimecode(bad, pal), std::nullopt) << bad;
    const TimecodeFormat drop{FrameRate(60000, 1001), true};
    for (int frame = 0; frame < 4; ++frame)
        EXPECT_EQ(parseTimecode("10:01:00;0" + std::to_string(frame), drop), std::nullopt);
    EXPECT_TRUE(parseTimecode("10:01:00;04", drop) && parseTimecode("10:10:00;00", drop));
}

TEST(FrameRateTest, TextsAndDecimalNumbersFindTheRateThatIsMeant) {
    for (const char* row :
         {"23.976 24000/1001", "23.98 24000/1001", "24 24", "24.0000001 24", "25 25",
          "29.97 30000/1001", "29.97003 30000/1001", "30 30", "47.95 48000/1001",
          "59.94 60000/1001", "119.88 120000/1001", "12.5 25/2", "0.5 1/2", "14.985 2997/200",
          "1000000 1000000", "50/2 25", "25/1 25", "1/25 1/25", "2147483647/2147483647 1"}) {
        const std::vector<std::string> texts = split(row, ' ');
        EXPECT_EQ(FrameRate::fromString(texts[0]).value_or(FrameRate()).asString(), texts[1]);
    }
    EXPECT_EQ(FrameRate::fromDouble(1.0 / 3), FrameRate(1, 3));
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double bad : {0.0, -25.0, std::nan(""), infinity, -infinity, 1e7, 1e-9})
        EXPECT_EQ(FrameRate::fromDouble(bad), std::nullopt) << bad;
    for (const char* bad :
         {"", "0", "0/1", "25/0", "-25", "+25", "25 ", "25.", ".5", "1e2", "25fps", "25/1/1",
          "25//1", "/25", "2147483648/1", "1/2147483648", "nan", "30000/1001.0", "1000001/1"})
        EXPECT_EQ(FrameRate::fromString(bad), std::nullopt) << bad;
    EXPECT_FALSE(FrameRate(-25).valid() || FrameRate(25, 0).valid() || FrameRate().valid());
    EXPECT_EQ(FrameRate().frameToFlicks(10) + FrameRate().flicksToFrameFloor(10), 0);
}

TEST(FrameRateTest, FramesOfRatesInUseAreWholeFlicks) {
    for (const FrameRate& rate :
         {FrameRate(24000, 1001), FrameRate(24), FrameRate(25), FrameRate(30000, 1001),
          FrameRate(30), FrameRate(48), FrameRate(50), FrameRate(60000, 1001), FrameRate(120)}) {
        const Flicks second = kFlicksPerSecond;
        EXPECT_EQ(second * rate.den() % rate.num(), 0) << rate.asString();
        EXPECT_EQ(rate.frameToFlicks(rate.num()), second * rate.den());
        EXPECT_TRUE(rate.isOnFrame(rate.frameToFlicks(-7)));
        EXPECT_FALSE(rate.isOnFrame(rate.frameToFlicks(-7) + 1));
    }
}

RC_GTEST_PROP(FrameRateTest, TimesFallIntoTheFrameThatHoldsThem, ()) {
    const FrameRate rate(*rc::gen::inRange(1, 200000), *rc::gen::inRange(1, 2000));
    const auto last = std::min<std::int64_t>(rate.flicksToFrameFloor(kMaxFlicks), 100'000'000);
    const auto frame = *rc::gen::inRange<std::int64_t>(-last, last);
    const Flicks start = rate.frameToFlicks(frame);
    const Flicks next = rate.frameToFlicks(frame + 1);
    RC_ASSERT(rate.flicksToFrameFloor(start) == frame);
    RC_ASSERT(rate.flicksToFrameFloor(next - 1) == frame);
    RC_ASSERT(rate.flicksToFrameNearest(start) == frame);
    RC_ASSERT(rate.isOnFrame(start));
    const Flicks third = (next - start) / 3;
    RC_ASSERT(rate.flicksToFrameNearest(start + third) == frame);
    RC_ASSERT(rate.flicksToFrameNearest(next - third) == frame + 1);
}

} // namespace
} // namespace cutroom
