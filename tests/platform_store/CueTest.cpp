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

TEST(Cue, SlidesAsPointOrAsRangeWhichIsInOrder) {
    Cue range(7.0, L"late");
    range.setEndTime(3.0);
    range.slide(-1.0);
    EXPECT_EQ(range.getRange(), TimeRange(2.0, 6.0));
    Cue point(1.0, L"point");
    point.slide(4.0);
    EXPECT_EQ(point.getTime(), 5.0);
    EXPECT_FALSE(point.hasEnd());
}

TEST(Cue, CustomMetadataKeepsOneValueAKeyAndDropsEmptyOnes) {
    Cue cue;
    for (const auto& [key, value] :
         {std::pair{"shot", L"A1"}, {"note", L"x"}, {"shot", L"A2"}, {"note", L""}, {"no", L""}})
        cue.setCustomMetadata(key, value);
    EXPECT_EQ(cue.getCustomMetadata(), (Cue::Metadata{{"shot", L"A2"}}));
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
    Cue moved = cues.getCuePoint(0);
    moved.setTime(3.5);
    ASSERT_TRUE(cues.setCuePoint(0, moved));
    EXPECT_THAT(names(cues), ElementsAre(L"b", L"a", L"c", L"d", L"e"));
    EXPECT_EQ(cues.find(moved.getExtID()), 1U);
    EXPECT_FALSE(cues.setCuePoint(5, moved) || cues.deleteCue(5));
}

TEST(CueList, CopiesKeepTheirCuesWhenAnotherChanges) {
    CueList cues;
    for (const auto& [time, name] : {std::pair{1.0, L"a"}, {2.0, L"b"}, {3.0, L"c"}})
        cues.addCuePoint(Cue(time, name));
    const CueList before = cues;
    ASSERT_TRUE(cues.setCuePoint(0, cues.getCuePoint(2))); // one of its own
    cues.addCuePoint(before.getCuePoint(0));
    cues.slide(1);
    EXPECT_THAT(names(cues), ElementsAre(L"a", L"b", L"c", L"c"));
    EXPECT_THAT(names(before), ElementsAre(L"a", L"b", L"c"));
    EXPECT_EQ(before.getCuePoint(0).getTime(), 1.0);
    cues.deleteAllCues();
    EXPECT_EQ(before.getNumCuePoints(), 3U);
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
    for (const Row& row :
         {Row{4, -2049, 6, true}, Row{4, -2049, 2, false}, Row{4, -2049, 4 | 2048, false},
          Row{0, -1, 0, true}, Row{4, 0, 4, false}}) {
        Cue cue;
        cue.setFlags(row.flags);
        EXPECT_EQ(CueFilter(row.wanted, row.allowed).accepts(cue), row.accepted)
            << row.wanted << ' ' << row.allowed << ' ' << row.flags;
    }
}

} // namespace
