#include "tests/vob/VobFixture.h"

#include <cmath>

using namespace cutroom::test;
using Kv::MarkTypes::In;
using Kv::MarkTypes::Out;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobTime : public VobFixture {};

} // namespace

TEST_F(VobTime, MovesAsAskedAndTellsEachTime) {
    const auto vob = open(makeEdit());
    RecorderClient client(vob.get(), calls_, "a");
    vob->setCurrentTime(2.013);
    vob->setCurrentTime(2.013);
    vob->storeCurrentTime(3);
    EXPECT_EQ(vob->getCurrentTime(), 3.0);
    vob->setCurrentTime(std::nan(""));
    EXPECT_THAT(calls_, ElementsAre("a: change 2 time 2.013", "a: change 2 time 2.013"));
    EXPECT_EQ(vob->getCurrentTime(), 3.0);
}

TEST_F(VobTime, WithoutEditNothingIsAcceptedOrTold) {
    const auto vob = openNothing();
    ASSERT_FALSE(vob->hasEdit());
    RecorderClient client(vob.get(), calls_, "a");
    vob->setCurrentTime(2);
    vob->setMarkTime(0, 1, In);
    vob->invalidateMark(kChanAllSelected);
    vob->exchangeCurrentAndMark(0);
    vob->setSelected(kChanAllSelected, true);
    vob->setViewRegion({1, 2}, true);
    vob->alignMarks(In);
    EXPECT_THAT(calls_, IsEmpty());
    EXPECT_EQ(vob->getCurrentTime(), kNoTime);
    EXPECT_EQ(vob->getMarkTime(kChanAllSelected), kNoTime);
    EXPECT_EQ(vob->getTotalDuration(), 0.0);
    EXPECT_TRUE(vob->isReadOnly());
    EXPECT_EQ(vob->getTrackSelections(IdStamp(1, 2, 3)), nullptr);
}

TEST_F(VobTime, AClientCannotMoveTheTimeItIsToldOf) {
    const auto vob = open(makeEdit());
    RecorderClient client(vob.get(), calls_, "a");
    client.onChange = [&](const VobModification&) { vob->setCurrentTime(9); };
    vob->setCurrentTime(4);
    EXPECT_EQ(vob->getCurrentTime(), 4.0);
    EXPECT_EQ(calls_.size(), 1u);
    vob->setCurrentTime(5); // the guard is down again
    EXPECT_EQ(vob->getCurrentTime(), 5.0);
}

TEST_F(VobTime, ChangesByPlaybackAreFlaggedWhileTold) {
    const auto vob = open(makeEdit());
    std::vector<unsigned> flags;
    RecorderClient client(vob.get(), calls_, "a");
    client.onChange = [&](const VobModification& change) {
        if (change.includes(kVobTime))
            vob->setMarkTime(IdStamp(), 1, In); // a telling inside leaves the flag up
        flags.push_back(vob->getTimeChangeFlags());
    };
    vob->setCurrentTime(1);
    vob->setPlaying(true);
    vob->setTransientTimeChange(true);
    vob->setCurrentTime(2);
    EXPECT_THAT(flags, ElementsAre(0u, 0u, 20u, 20u));
    EXPECT_EQ(vob->getTimeChangeFlags(), 16u);
}

TEST_F(VobTime, PreviewingRemembersTheTimeOnlyWhenAsked) {
    const auto vob = open(makeEdit());
    vob->setCurrentTime(3);
    vob->setPreviewing(true, false);
    EXPECT_TRUE(vob->isPreviewing());
    EXPECT_EQ(vob->getOriginalTime(), kNoTime);
    vob->setPreviewing(true, true);
    EXPECT_EQ(vob->getOriginalTime(), 3.0);
    vob->setPreviewing(false, true);
    EXPECT_FALSE(vob->isPreviewing());
    EXPECT_EQ(vob->getOriginalTime(), kNoTime);
}

struct MonitorRow {
    const char* name;
    Vob::eMonitorPoint point;
    double in, out, shown;
};

class VobMonitorTime : public VobFixture, public testing::WithParamInterface<MonitorRow> {};

TEST_P(VobMonitorTime, IsTheMarkWhenSet) {
    const auto vob = open(makeEdit());
    vob->setCurrentTime(1);
    vob->storeMarkTime(IdStamp(), GetParam().in, In);
    vob->storeMarkTime(IdStamp(), GetParam().out, Out);
    vob->setMonitorPoint(GetParam().point);
    EXPECT_EQ(vob->getMonitorTime(), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(Rows, VobMonitorTime,
                         testing::Values(MonitorRow{"current", Vob::kMonitorCurrent, 2, 3, 1},
                                         MonitorRow{"in", Vob::kMonitorMarkIn, 2, 3, 2},
                                         MonitorRow{"out", Vob::kMonitorMarkOut, 2, 3, 3},
                                         MonitorRow{"noIn", Vob::kMonitorMarkIn, kNoTime, 3, 1},
                                         MonitorRow{"noOut", Vob::kMonitorMarkOut, 2, kNoTime, 1}),
                         [](const auto& row) { return std::string(row.param.name); });

struct ExchangeRow {
    const char* name;
    double in, out, time;          // before
    double newIn, newOut, newTime; // after
    std::vector<std::string> told;
};

class VobExchange : public VobFixture, public testing::WithParamInterface<ExchangeRow> {};

TEST_P(VobExchange, MovesToAMarkAndLeavesAnInMark) {
    const ExchangeRow& row = GetParam();
    const auto vob = open(makeEdit());
    vob->storeMarkTime(IdStamp(), row.in, In);
    vob->storeMarkTime(IdStamp(), row.out, Out);
    vob->storeCurrentTime(row.time);
    RecorderClient client(vob.get(), calls_, "a");
    IdStamp track;
    client.onChange = [&](const VobModification& m) { track = m.getModifiedTracks().front(); };
    vob->exchangeCurrentAndMark(1);
    EXPECT_EQ(vob->getCurrentTime(), row.newTime);
    for (const IdStamp& channel : vob->getEdit()->getChans()) {
        EXPECT_EQ(vob->getEditModule().getMark(channel, In), row.newIn);
        EXPECT_EQ(vob->getEditModule().getMark(channel, Out), row.newOut);
    }
    EXPECT_EQ(calls_, row.told);
    EXPECT_EQ(track, row.told.empty() ? IdStamp() : vob->getEdit()->getId(1));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VobExchange,
    testing::Values(
        ExchangeRow{"neither", kNoTime, kNoTime, 4, kNoTime, kNoTime, 4, {}},
        ExchangeRow{"inOnly", 2, kNoTime, 4, 4, kNoTime, 2, {"a: change 6 time 2 mark 4"}},
        ExchangeRow{"outOnly", kNoTime, 7, 4, 4, kNoTime, 7, {"a: change 6 time 7 mark 4"}},
        ExchangeRow{"bothAway", 2, 7, 4, 2, 7, 2, {"a: change 2 time 2"}},
        ExchangeRow{"bothOnIn", 2, 7, 2, 2, 7, 7, {"a: change 2 time 7"}},
        ExchangeRow{"bothOnOut", 2, 7, 7, 2, 7, 2, {"a: change 2 time 2"}}),
    [](const auto& row) { return std::string(row.param.name); });
