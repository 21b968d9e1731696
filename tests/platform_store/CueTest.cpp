// Cues: their order, their ranges, their filter.
#include "platform/store/Cue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using testing::ElementsAre;

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

std::vector<std::wstring> names(const CueList& cues) {
    std::vector<std::wstring> found;
    for (const Cue& cue : cues.cues())
        found.push_back(cue.getName());
    return found;
}

TEST(Cue, RangeIsInOrderWhicheverEndWasSetFirst) {
    Cue cue(7.0, L"late");
    cue.setEndTime(3.0);
    EXPECT_EQ(cue.getRange(), TimeRange(3.0, 7.0));
    cue.slide(-1.0);
    EXPECT_EQ(cue.getRange(), TimeRange(2.0, 6.0));
}

TEST(Cue, SlidingAPointCueKeepsItAPoint) {
    Cue cue(1.0, L"point");
    cue.slide(4.0);
    EXPECT_EQ(cue.getTime(), 5.0);
    EXPECT_FALSE(cue.hasEnd());
}

TEST(Cue, CustomMetadataKeepsOneValueAKeyAndDropsEmptyOnes) {
    Cue cue;
    cue.setCustomMetadata("shot", L"A1");
    cue.setCustomMetadata("note", L"x");
    cue.setCustomMetadata("shot", L"A2");
    cue.setCustomMetadata("note", L"");
    EXPECT_EQ(cue.getCustomMetadata().size(), 1U);
    EXPECT_EQ(cue.getCustomMetadata("shot"), L"A2");
    EXPECT_EQ(cue.getCustomMetadata("note"), L"");
}

TEST(CueList, KeepsTimeOrderAndTheOrderOfAddingAtOneTime) {
    CueList cues;
    for (const auto& [time, name] :
         {std::pair{5.0, L"c"}, {1.0, L"a"}, {5.0, L"d"}, {3.0, L"b"}, {5.0, L"e"}})
        cues.addCuePoint(Cue(time, name));
    EXPECT_THAT(names(cues), ElementsAre(L"a", L"b", L"c", L"d", L"e"));
    EXPECT_EQ(cues.nextAfter(3.0), 2U);
    EXPECT_EQ(cues.nextAfter(5.0), 5U);
}

TEST(CueList, MovesAChangedCueToItsPlaceAndFindsItByItsId) {
    CueList cues;
    for (const double time : {1.0, 2.0, 3.0})
        cues.addCuePoint(Cue(time, std::to_wstring(static_cast<int>(time))));
    Cue moved = cues.getCuePoint(0);
    moved.setTime(2.5);
    ASSERT_TRUE(cues.setCuePoint(0, moved));
    EXPECT_THAT(names(cues), ElementsAre(L"2", L"1", L"3"));
    EXPECT_EQ(cues.find(moved.getExtID()), 1U);
    EXPECT_FALSE(cues.deleteCue(3));
}

TEST(CueList, RefusesTimesThatAreNone) {
    CueList cues;
    for (const double bad :
         {kNoTime, std::nan(""), std::numeric_limits<double>::infinity(), -1e18}) {
        EXPECT_EQ(cues.addCuePoint(Cue(bad, L"bad")), kNone) << bad;
        if (bad == kNoTime)
            continue;
        Cue range(1.0, L"range");
        range.setEndTime(bad);
        EXPECT_EQ(cues.addCuePoint(range), kNone) << bad;
    }
    EXPECT_EQ(cues.getNumCuePoints(), 0U);
}

TEST(CueFilter, WantsAllItsBitsAndAllowsNoOther) {
    struct Row {
        unsigned wanted;
        int allowed;
        unsigned flags;
        bool accepted;
    };
    for (const Row& row : {Row{4, -2049, 6, true},
                           {4, -2049, 2, false},
                           {4, -2049, 4 | 2048, false},
                           {0, -1, 0, true},
                           {4, 0, 4, false}}) {
        Cue cue;
        cue.setFlags(row.flags);
        EXPECT_EQ(CueFilter(row.wanted, row.allowed).accepts(cue), row.accepted)
            << row.wanted << ' ' << row.allowed << ' ' << row.flags;
    }
}

} // namespace
