#include "editops/basics/UnjoinedCuts.h"
#include "editops/basics/IndexIndependentEventList.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutroom;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// One video channel with clips of one second each: event 2n comes in at second n, 2n + 1 goes out
// at n + 1.
class UnjoinedCutsTest : public testing::Test {
protected:
    static constexpr int kClips = 12;

    UnjoinedCutsTest()
        : host_(EmbeddedHost::repeatable()),
          edit_(EditManager::instance().makeNewEdit(makeNewEditCookie(), 1, 0, 0, {25, 1})),
          channel_(edit_->getId(0)), cel_(edit_->get_edit_cel_p(channel_)) {
        std::vector<CelSegment> clips;
        for (int second = 0; second < kClips; ++second)
            clips.push_back(clip(second, second + 1));
        EXPECT_TRUE(cel_->setSegments(clips).ok());
    }
    static CelSegment clip(double from, double to, std::uint64_t material = 0) {
        CelSegment segment;
        segment.start = toFlicks(from);
        segment.end = toFlicks(to);
        segment.material =
            Cookie('E', material ? material : 100 + static_cast<std::uint64_t>(from));
        return segment;
    }
    ce_handle in(int second) const { return {*cel_, static_cast<std::uint32_t>(2 * second)}; }
    ce_handle out(int second) const { return {*cel_, static_cast<std::uint32_t>(2 * second - 1)}; }
    // In points at these seconds.
    UnjoinedCuts cutsAt(const std::vector<int>& seconds) const {
        UnjoinedCuts cuts;
        for (const int second : seconds)
            cuts.addHandle(in(second), 0);
        return cuts;
    }
    static std::vector<double> times(const UnjoinedCuts& cuts) {
        std::vector<double> result;
        for (unsigned short i = 0; i < cuts.size(); ++i)
            result.push_back(cuts.getHandle(i).get_edit_time());
        return result;
    }
    // Adds a cut at `seconds` within the clips.
    void split(double seconds) { EXPECT_TRUE(cel_->split(toFlicks(seconds)).ok()); }

    EmbeddedHost host_;
    EditPtr edit_;
    IdStamp channel_;
    Kv::Ptr<Cel> cel_;
};

} // namespace

// --- the list ------------------------------------------------------------------------------------

TEST_F(UnjoinedCutsTest, KeepsHandlesInOrderAndOnce) {
    UnjoinedCuts cuts;
    cuts.addHandle(in(3), 1);
    cuts.addHandle(in(1), 2);
    cuts.addHandle(out(3), 4); // at the same time, in front of the in point
    cuts.addHandle(ce_handle(), 8);
    cuts.addHandle(in(3), 16);
    EXPECT_EQ(cuts.asString(), "2,5,6");
    EXPECT_EQ(cuts.getFlag(in(3)), 16u);
    EXPECT_EQ(cuts.getFlag(in(2)), 0u);
    EXPECT_EQ(cuts.getFlag(9), 0u);
    EXPECT_EQ(cuts.getIndexFor(out(3)), 1);
    EXPECT_EQ(cuts.getIndexFor(in(2)), -1);
    cuts.deleteHandle(in(2));
    cuts.toggleHandle(in(1), 7);
    cuts.toggleHandle(in(2), 7);
    EXPECT_EQ(cuts.asString(), "4,5,6");
    EXPECT_EQ(cuts.getFlag(in(2)), 7u);
    EXPECT_FALSE(cuts.isMember(in(1)));
}

TEST_F(UnjoinedCutsTest, FlagsAreSetAndClearedByBits) {
    UnjoinedCuts cuts = cutsAt({1, 2, 3});
    cuts.setFlag(0, 4 | kCutConstrainIn, true);
    cuts.setFlag(1, kCutConstraints, true);
    cuts.setFlag(7, 4, true);
    EXPECT_EQ(cuts.numMatching(kCutConstraints), 2);
    EXPECT_EQ(cuts.numMatching(4), 1);
    EXPECT_FALSE(cuts.anyMatching(8));
    cuts.setFlag(0, kCutConstrainIn, false);
    EXPECT_EQ(cuts.getFlag(0), 4u);
    cuts.clearTrimConstraints();
    EXPECT_EQ(cuts.getFlag(0), 4u);
    EXPECT_FALSE(cuts.anyMatching(kCutConstraints));
}

TEST_F(UnjoinedCutsTest, CountsWhatLiesBeforeATimeByMoreThanTheTolerance) {
    const UnjoinedCuts cuts = cutsAt({1, 2, 3});
    for (const auto& [seconds, count] :
         {std::pair(0.0, 0), std::pair(1.0, 0), std::pair(1.0 + 5e-7, 0), std::pair(1.0 + 5e-6, 1),
          std::pair(2.5, 2), std::pair(9.0, 3), std::pair(-1.0, 0)})
        EXPECT_EQ(cuts.numSelectionsBeforeTime(seconds), count) << seconds;
}

TEST_F(UnjoinedCutsTest, APointIsPoppedBetweenTheCutsOfAPair) {
    const UnjoinedCuts cuts = cutsAt({1, 2, 3});
    const Kv::Ptr<Cel> points = Kv::makePtr<Cel>();
    ASSERT_TRUE(points
                    ->setSegments({clip(0, 1.5), clip(1.5, 2), clip(2, 2.00005), clip(2.00005, 2.5),
                                   clip(2.5, 4)})
                    .ok());
    const auto popped = [&](std::uint32_t index) { return cuts.isPopped({*points, index}); };
    EXPECT_TRUE(popped(2));  // in at 1.5
    EXPECT_FALSE(popped(8)); // in at 2.5
    EXPECT_TRUE(popped(4));  // in exactly at 2
    EXPECT_TRUE(popped(5));  // out at 2.00005, looked at before 2
    EXPECT_FALSE(popped(6)); // in at 2.00005
    EXPECT_FALSE(cuts.isPopped(ce_handle()));
}

TEST_F(UnjoinedCutsTest, FindsTheNearest) {
    const UnjoinedCuts cuts = cutsAt({1, 2, 4});
    for (const auto& [seconds, index] :
         {std::pair(-5.0, 0), std::pair(1.4, 0), std::pair(1.5, 1), std::pair(2.0, 1),
          std::pair(2.9, 1), std::pair(3.0, 2), std::pair(99.0, 2)})
        EXPECT_EQ(cuts.getNearestHandle(seconds), index) << seconds;
    EXPECT_EQ(UnjoinedCuts().getNearestHandle(1), -1);
}

TEST_F(UnjoinedCutsTest, OfACutsTwoPointsAtTheFrontTheInPointIsNearest) {
    UnjoinedCuts cuts = cutsAt({2});
    cuts.addHandle(out(2), 0);
    EXPECT_EQ(cuts.getNearestHandle(2), 1);
    EXPECT_EQ(cuts.getNearestHandle(1.9), 0);
    UnjoinedCuts apart = cutsAt({3});
    apart.addHandle(out(2), 0);
    EXPECT_EQ(apart.getNearestHandle(2), 0); // what follows is not its in point
}

// --- as text -------------------------------------------------------------------------------------

TEST_F(UnjoinedCutsTest, TextHoldsTheIndicesInOrder) {
    const UnjoinedCuts cuts = cutsAt({2, 6});
    UnjoinedCuts read;
    read.addHandle(in(1), 5);
    read.fromString("4,7x,12", cel_.get());
    ASSERT_EQ(read.size(), 3);
    EXPECT_EQ(read.asString(), "4,7,12");
    EXPECT_FALSE(read.anyMatching(~0u));
    read.fromString(cuts.asString(), cel_.get());
    EXPECT_EQ(times(read), times(cuts));
    read.fromString("12,4,,nonsense,999", cel_.get()); // kept in the order of the text
    EXPECT_EQ(read.asString(), "12,4,0,0,999");
    EXPECT_FALSE(read.getHandle(4).valid());
    read.fromString("4", nullptr);
    EXPECT_EQ(read.asString(), "");
    read.fromString("", cel_.get());
    EXPECT_TRUE(read.empty());
}

// --- across changes of the edit ------------------------------------------------------------------

TEST_F(UnjoinedCutsTest, ASnapshotFindsCutsAgainWhereverTheirEventsAre) {
    const UnjoinedCuts cuts = cutsAt({2, 5, 8});
    IndexIndependentEventList snapshot(cuts, edit_, channel_);
    split(0.5);
    ASSERT_TRUE(cel_->lift({4.5, 5.5}).ok()); // the cut at 5 goes
    UnjoinedCuts found;
    found.addHandle(in(1), 9);
    found.buildFrom(snapshot);
    EXPECT_THAT(times(found), ElementsAre(2, 8));
    EXPECT_EQ(found.asString(), "6,20");
    EXPECT_FALSE(found.anyMatching(~0u));
    EXPECT_FALSE(snapshot.getHandleFor(1).valid());
    EXPECT_FALSE(snapshot.getHandleFor(3).valid());
}

TEST_F(UnjoinedCutsTest, APointThatHadGoneBeforeTheSnapshotIsNotFound) {
    ASSERT_TRUE(cel_->lift({0, 1}).ok()); // black at 0, as is an event of nothing
    const UnjoinedCuts cuts = cutsAt({2, 5});
    const CelEventPair segment(edit_, channel_, 5.5);
    split(7.5);
    IndexIndependentEventList snapshot(cuts, edit_, channel_);
    EXPECT_EQ(snapshot.size(), 2u);
    UnjoinedCuts found;
    found.buildFrom(snapshot);
    EXPECT_EQ(found.asString(), "");
    snapshot.buildFrom(segment);
    EXPECT_FALSE(snapshot.getHandleFor(0).valid() || snapshot.getHandleFor(1).valid());
}

TEST_F(UnjoinedCutsTest, EventsMatchByExactTimeMaterialAndFlags) {
    const ChannelEvent event = cel_->get_event(4);
    ChannelEvent other = event;
    other.speed = 2;
    EXPECT_TRUE(IndexIndependentEventList::eventsMatch(event, other));
    other.time += 1;
    EXPECT_FALSE(IndexIndependentEventList::eventsMatch(event, other));
    other = event;
    other.material = Cookie('E', 1);
    EXPECT_FALSE(IndexIndependentEventList::eventsMatch(event, other));
    other = event;
    other.flags |= kEventDisabled;
    EXPECT_FALSE(IndexIndependentEventList::eventsMatch(event, other));
}

TEST_F(UnjoinedCutsTest, AMatchIsLookedForAmongThePointsAtItsTime) {
    // Three points within the tolerance of second 3; the wanted one is the last of them.
    IndexIndependentEventList snapshot(cutsAt({3}), edit_, channel_);
    const double flick = 1.0 / kFlicksPerSecond;
    ASSERT_TRUE(cel_->overwrite(clip(3 - 2 * flick, 3, 55)).ok());
    EXPECT_EQ(snapshot.getHandleFor(0).get_edit_time(), 3.0);
    EXPECT_EQ(snapshot.getHandleFor(0).getEvent().material, Cookie('E', 103));
    ASSERT_TRUE(cel_->overwrite(clip(3, 3.5, 66)).ok());
    EXPECT_FALSE(snapshot.getHandleFor(0).valid()); // other material
}

TEST_F(UnjoinedCutsTest, ASnapshotNeedsAnEditAndAChannel) {
    IndexIndependentEventList snapshot(cutsAt({2}), edit_, channel_);
    snapshot.buildFrom(cutsAt({3, 4}), EditPtr(), channel_);
    snapshot.buildFrom(cutsAt({3, 4}), edit_, IdStamp());
    EXPECT_EQ(snapshot.size(), 1u);
    EXPECT_EQ(snapshot.getTrack(), channel_);
    snapshot.buildFrom(CelEventPair(edit_, channel_, 5.5));
    ASSERT_EQ(snapshot.size(), 2u);
    EXPECT_EQ(snapshot.getHandleFor(0), in(5));
    EXPECT_EQ(snapshot.getHandleFor(1), out(6));
    edit_->removeChan(channel_, false);
    EXPECT_FALSE(snapshot.getHandleFor(0).valid());
}

TEST_F(UnjoinedCutsTest, ReEstablishGoesByEffectGraphThenByPlace) {
    const auto putGraph = [&](std::uint32_t index, const IdStamp& graph) {
        ChannelEvent event = cel_->get_event(index);
        event.effectGraph = graph;
        ASSERT_TRUE(cel_->setEvent(index, event).ok());
    };
    const IdStamp graph(1, 2, 3), vanishes(4, 5, 6);
    putGraph(8, graph); // in(4)
    putGraph(12, vanishes);
    UnjoinedCuts cuts = cutsAt({1, 4, 6, 11});
    cuts.setFlag(1, 4, true);
    cuts.setFlag(2, 8, true);
    split(2.5); // in(4) is at 10 now, in(1) where it was, 12 is another
    putGraph(14, IdStamp());
    ASSERT_TRUE(cel_->remove({8, 12}).ok());
    cuts.reEstablish(edit_.getCookie(), channel_);
    EXPECT_EQ(cuts.asString(), "2,10,12"); // 22 lies past the end
    EXPECT_EQ(cuts.getFlag(1), 4u);
    EXPECT_EQ(cuts.getFlag(2), 8u);
    EXPECT_THAT(times(cuts), ElementsAre(1, 4, 5));
    for (unsigned short i = 0; i < cuts.size(); ++i)
        EXPECT_TRUE(cuts.getHandle(i).valid());
    EXPECT_EQ(cuts[2].effectGraph, vanishes); // kept for the next time
    cuts.reEstablish(edit_.getCookie(), IdStamp(9, 9, 9));
    EXPECT_TRUE(cuts.empty());
}

TEST(UnjoinedCut, TakesTheGraphOfAValidHandleOnly) {
    const UnjoinedCut cut(ce_handle(), 3);
    EXPECT_FALSE(cut.effectGraph.valid());
    EXPECT_EQ(cut.flags, 3u);
    EXPECT_EQ(UnjoinedCut(), UnjoinedCut(ce_handle()));
}
