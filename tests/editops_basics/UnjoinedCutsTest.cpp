#include "editops/basics/UnjoinedCuts.h"
#include "editops/basics/IndexIndependentEventList.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/Edit.h"
#include "tests/support/Edits.h"

#include <gtest/gtest.h>

using namespace cutroom;
using cutroom::test::makeEdit;

namespace {

// One video channel with clips of one second each: event 2n comes in at second n, 2n + 1 goes out
// at n + 1.
class UnjoinedCutsTest : public testing::Test {
protected:
    UnjoinedCutsTest() {
        std::vector<CelSegment> clips;
        for (int second = 0; second < 12; ++second)
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
    void split(double seconds) { EXPECT_TRUE(cel_->split(toFlicks(seconds)).ok()); }
    // The points of a snapshot that are found again.
    static std::string found(IndexIndependentEventList& snapshot) {
        UnjoinedCuts cuts;
        cuts.buildFrom(snapshot);
        return cuts.asString();
    }

    EmbeddedHost host_{EmbeddedHost::repeatable()};
    const EditPtr edit_ = makeEdit(1, 0);
    const IdStamp channel_ = edit_->getId(0);
    const Kv::Ptr<Cel> cel_ = edit_->get_edit_cel_p(channel_);
};

} // namespace

TEST_F(UnjoinedCutsTest, KeepsHandlesInOrderAndOnce) {
    UnjoinedCuts cuts;
    cuts.addHandle(in(3), 1);
    cuts.addHandle(in(1), 2);
    cuts.addHandle(out(3), 4); // at the same time, in front of the in point
    cuts.addHandle(ce_handle(), 8);
    cuts.addHandle(in(3), 16);
    EXPECT_EQ(cuts.asString(), "2,5,6");
    EXPECT_EQ(cuts.getFlag(in(3)), 16u);
    EXPECT_EQ(cuts.getFlag(in(2)) + cuts.getFlag(9), 0u);
    EXPECT_EQ(cuts.getIndexFor(out(3)), 1);
    EXPECT_EQ(cuts.getIndexFor(in(2)), -1);
    cuts.deleteHandle(in(2));
    cuts.toggleHandle(in(1), 7);
    cuts.toggleHandle(in(2), 7);
    EXPECT_EQ(cuts.asString(), "4,5,6");
    EXPECT_EQ(cuts.getFlag(in(2)), 7u);
    EXPECT_FALSE(cuts.isMember(in(1)));
    EXPECT_EQ(UnjoinedCut(), UnjoinedCut(ce_handle())); // the zero id
}

TEST_F(UnjoinedCutsTest, FlagsAreSetAndClearedByBits) {
    UnjoinedCuts cuts = cutsAt({1, 2, 3});
    cuts.setFlag(0, 4 | kCutConstraints, true);
    cuts.setFlag(1, kCutConstrainIn, true);
    cuts.setFlag(7, 4, true);
    cuts.setFlag(0, kCutConstrainIn, false);
    EXPECT_EQ(cuts.getFlag(0), 4u | kCutConstrainOut);
    EXPECT_EQ(cuts.numMatching(kCutConstraints), 2);
    cuts.clearTrimConstraints();
    EXPECT_EQ(cuts.getFlag(0), 4u);
    EXPECT_TRUE(cuts.anyMatching(4) && !cuts.anyMatching(kCutConstraints));
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
    const double edges[] = {0, 1.5, 2, 2.00005, 2.5, 4};
    std::vector<CelSegment> clips;
    for (std::size_t i = 0; i + 1 < std::size(edges); ++i)
        clips.push_back(clip(edges[i], edges[i + 1]));
    const Kv::Ptr<Cel> points = Kv::makePtr<Cel>();
    ASSERT_TRUE(points->setSegments(clips).ok());
    for (const auto& [index, popped] : {std::pair(2u, true), // in at 1.5
                                        {8u, false},         // in at 2.5
                                        {4u, true},          // in exactly at 2
                                        {5u, true},          // out at 2.00005, looked at before 2
                                        {6u, false},         // in at 2.00005
                                        {99u, false}})
        EXPECT_EQ(cuts.isPopped({*points, index}), popped) << index;
}

TEST_F(UnjoinedCutsTest, FindsTheNearest) {
    const UnjoinedCuts cuts = cutsAt({1, 2, 4});
    for (const auto& [seconds, index] :
         {std::pair(-5.0, 0), {1.4, 0}, {1.5, 1}, {2.0, 1}, {2.9, 1}, {3.0, 2}, {99.0, 2}})
        EXPECT_EQ(cuts.getNearestHandle(seconds), index) << seconds;
    EXPECT_EQ(UnjoinedCuts().getNearestHandle(1), -1);
    // Of a cut's two points at the front the in point is meant.
    UnjoinedCuts both = cutsAt({2}), apart = cutsAt({3});
    both.addHandle(out(2), 0);
    apart.addHandle(out(2), 0);
    EXPECT_EQ(both.getNearestHandle(2), 1);
    EXPECT_EQ(both.getNearestHandle(1.9), 0);
    EXPECT_EQ(apart.getNearestHandle(2), 0); // what follows is not its in point
}

TEST_F(UnjoinedCutsTest, TextHoldsTheIndicesInOrder) {
    UnjoinedCuts read;
    read.addHandle(in(1), 5);
    read.fromString("4,7x,12", cel_.get());
    ASSERT_EQ(read.size(), 3);
    EXPECT_EQ(read.asString(), "4,7,12");
    EXPECT_EQ(read.getHandle(0), in(2));
    EXPECT_FALSE(read.anyMatching(~0u));
    read.fromString("12,999,4,,nonsense", cel_.get()); // kept in the order of the text
    EXPECT_EQ(read.asString(), "12,999,4,0,0");
    EXPECT_FALSE(read.getHandle(1).valid());
    EXPECT_EQ(read.numSelectionsBeforeTime(9), 4) << "what is not valid is passed over";
    read.fromString("4", nullptr);
    EXPECT_EQ(read.asString(), "");
    read.fromString("", cel_.get());
    EXPECT_TRUE(read.empty());
}

TEST_F(UnjoinedCutsTest, ASnapshotFindsCutsAgainWhereverTheirEventsAre) {
    IndexIndependentEventList snapshot(cutsAt({2, 5, 8}), edit_, channel_);
    split(0.5);
    ASSERT_TRUE(cel_->lift({4.5, 5.5}).ok()); // the cut at 5 goes
    UnjoinedCuts cuts;
    cuts.addHandle(in(1), 9);
    cuts.buildFrom(snapshot);
    EXPECT_EQ(cuts.asString(), "6,20");
    EXPECT_FALSE(cuts.anyMatching(~0u));
    EXPECT_FALSE(snapshot.getHandleFor(1).valid() || snapshot.getHandleFor(3).valid());
}

TEST_F(UnjoinedCutsTest, APointThatHadGoneBeforeTheSnapshotIsNotFound) {
    ASSERT_TRUE(cel_->lift({0, 1}).ok()); // black at 0, as is an event of nothing
    const UnjoinedCuts cuts = cutsAt({2, 5});
    const CelEventPair segment(edit_, channel_, 5.5);
    split(7.5);
    IndexIndependentEventList snapshot(cuts, edit_, channel_);
    EXPECT_EQ(snapshot.size(), 2u);
    EXPECT_EQ(found(snapshot), "");
    for (const CelEventPair& gone : {segment, CelEventPair()}) {
        snapshot.buildFrom(gone);
        EXPECT_EQ(found(snapshot), "");
    }
}

TEST_F(UnjoinedCutsTest, EventsMatchByExactTimeMaterialAndFlags) {
    const ChannelEvent event = cel_->get_event(4);
    const auto matches = [&](auto change) {
        ChannelEvent other = event;
        change(other);
        return IndexIndependentEventList::eventsMatch(event, other);
    };
    EXPECT_TRUE(matches([](ChannelEvent& other) { other.speed = 2; }));
    EXPECT_FALSE(matches([](ChannelEvent& other) { other.time += 1; }));
    EXPECT_FALSE(matches([](ChannelEvent& other) { other.material = Cookie('E', 1); }));
    EXPECT_FALSE(matches([](ChannelEvent& other) { other.flags |= kEventDisabled; }));
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
    EXPECT_EQ(found(snapshot), "4");
    EXPECT_EQ(snapshot.getTrack(), channel_);
    snapshot.buildFrom(cutsAt({3}), edit_, channel_); // in place of that
    EXPECT_EQ(found(snapshot), "6");
    snapshot.buildFrom(CelEventPair(edit_, channel_, 5.5));
    EXPECT_EQ(found(snapshot), "10,11");
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
    putGraph(7, graph); // on both sides of the cut at 4
    putGraph(8, graph);
    putGraph(12, vanishes);
    UnjoinedCuts cuts = cutsAt({1, 4, 6, 11});
    cuts.addHandle(out(4), 4);
    cuts.setFlag(3, 8, true);
    cuts[1].second = graph;
    split(2.5); // in(4) is at 10 now, in(1) where it was, 12 is another
    putGraph(14, IdStamp());
    ASSERT_TRUE(cel_->remove({8, 12}).ok());
    cuts.reEstablish(edit_.getCookie(), channel_);
    EXPECT_EQ(cuts.asString(), "2,9,10,12"); // 22 lies past the end
    EXPECT_EQ(cuts.getFlag(1), 4u);
    EXPECT_EQ(cuts.getFlag(3), 8u);
    EXPECT_EQ(cuts[1].second, graph);
    EXPECT_EQ(cuts[3].effectGraph, vanishes); // kept for the next time
    cuts.reEstablish(edit_.getCookie(), IdStamp(9, 9, 9));
    EXPECT_TRUE(cuts.empty());
}
