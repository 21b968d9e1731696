#include "tests/vob/VobFixture.h"

#include <cmath>

using namespace cutroom::test;
using Kv::MarkTypes::In;
using Kv::MarkTypes::Out;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class VobTime : public VobFixture {
protected:
    Kv::Ptr<Vob> vob_ = open(makeEdit());
    RecorderClient client_{vob_.get(), calls_, "a"};
};

} // namespace

TEST_F(VobTime, MovesAsAskedAndTellsEachTime) {
    vob_->setCurrentTime(2.013);
    vob_->setCurrentTime(2.013);
    vob_->storeCurrentTime(3);
    EXPECT_EQ(vob_->getCurrentTime(), 3.0);
    vob_->setCurrentTime(std::nan(""));
    EXPECT_THAT(calls_, ElementsAre("a: change 2 time 2.013", "a: change 2 time 2.013"));
    EXPECT_EQ(vob_->getCurrentTime(), 3.0);
}

TEST_F(VobTime, WithoutEditNothingIsAcceptedOrTold) {
    const auto vob = openNothing();
    ASSERT_FALSE(vob->hasEdit());
    RecorderClient client(vob.get(), calls_, "none");
    vob->setCurrentTime(2);
    vob->setMarkTime(0, 1, In);
    vob->invalidateMark(kChanAllSelected);
    vob->exchangeCurrentAndMark(0);
    vob->setSelected(kChanAllSelected, true);
    vob->setViewRegion({1, 2}, true);
    vob->setVisibleCuesFilter(CueFilter(4, -1));
    vob->setViewEdits({vob_->getEdit()});
    vob->alignMarks(In);
    vob->setMarkTime(IdStamp(), 1, In);
    vob->setMarkTime(IdStamp(), {1, 2});
    vob->setSelected(kChanAudio, kSubNormal, true);
    vob->setSelectedFrom(0);
    vob->soloSelect(IdStamp(1, 2, 3));
    vob->selectLevelNode(IdStamp(1, 2, 3), 1, true);
    vob->checkQuantisation();
    vob->setCustomStillsProviders({});
    EXPECT_FALSE(vob->addCue(Cue(), "a") || vob->hasChanOfType(kChanVideo, false, false));
    EXPECT_THAT(calls_, IsEmpty());
    EXPECT_EQ(vob->getCurrentTime(), kNoTime);
    EXPECT_EQ(vob->getMarkTime(kChanAllSelected), kNoTime);
    EXPECT_EQ(vob->getTotalDuration(), 0.0);
    EXPECT_TRUE(vob->isReadOnly());
    EXPECT_EQ(vob->getTrackSelections(IdStamp(1, 2, 3)), nullptr);
}

TEST_F(VobTime, AClientCannotMoveTheTimeItIsToldOf) {
    client_.onChange = [&](const VobModification&) { vob_->setCurrentTime(9); };
    vob_->setCurrentTime(4);
    EXPECT_EQ(vob_->getCurrentTime(), 4.0);
    EXPECT_EQ(calls_.size(), 1u);
    vob_->setCurrentTime(5); // the guard is down again
    EXPECT_EQ(vob_->getCurrentTime(), 5.0);
}

TEST_F(VobTime, ChangesByPlaybackAreFlaggedWhileTold) {
    std::vector<unsigned> flags;
    client_.onChange = [&](const VobModification& change) {
        VobModification inside(kVobTime);
        inside.setMarkTime(1);
        if (change.getMarkTime() == kNoTime)
            vob_->addModification(inside); // leaves the flag up
        flags.push_back(vob_->getTimeChangeFlags());
    };
    vob_->setCurrentTime(1);
    vob_->setPlaying(true);
    vob_->setTransientTimeChange(true);
    vob_->setCurrentTime(2);
    vob_->setCurrentTime(3, Vob::kTimeBySynchroniser);
    EXPECT_THAT(flags, ElementsAre(0u, 0u, 20u, 20u, 68u, 68u));
    EXPECT_EQ(vob_->getTimeChangeFlags(), 16u);
}

TEST_F(VobTime, OfTheMonitorIsTheMarkThatIsNamedAndSet) {
    vob_->setCurrentTime(1);
    for (const auto& [in, out, shown] : {std::tuple(2.0, 3.0, std::array{1.0, 2.0, 3.0}),
                                         std::tuple(kNoTime, kNoTime, std::array{1.0, 1.0, 1.0})}) {
        vob_->storeMarkTime(IdStamp(), in, In);
        vob_->storeMarkTime(IdStamp(), out, Out);
        for (const auto point : {Vob::kMonitorCurrent, Vob::kMonitorMarkIn, Vob::kMonitorMarkOut}) {
            vob_->setMonitorPoint(point);
            EXPECT_EQ(vob_->getMonitorTime(), shown[std::size_t(point)]) << point;
        }
    }
}

struct ExchangeRow {
    const char* name;
    double in, out, time;          // before
    double newIn, newOut, newTime; // after
    std::vector<std::string> told;
};

class VobExchange : public VobTime, public testing::WithParamInterface<ExchangeRow> {};

TEST_P(VobExchange, MovesToAMarkAndLeavesAnInMark) {
    const ExchangeRow& row = GetParam();
    vob_->storeMarkTime(IdStamp(), row.in, In);
    vob_->storeMarkTime(IdStamp(), row.out, Out);
    vob_->storeCurrentTime(row.time);
    IdStamp track;
    client_.onChange = [&](const VobModification& m) { track = m.getModifiedTracks().front(); };
    vob_->exchangeCurrentAndMark(1);
    EXPECT_EQ(vob_->getCurrentTime(), row.newTime);
    for (const IdStamp& channel : vob_->getEdit()->getChans()) {
        EXPECT_EQ(vob_->getEditModule().getMark(channel, In), row.newIn);
        EXPECT_EQ(vob_->getEditModule().getMark(channel, Out), row.newOut);
    }
    EXPECT_EQ(calls_, row.told);
    EXPECT_EQ(track, row.told.empty() ? IdStamp() : vob_->getEdit()->getId(1));
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
