#include "platform/store/Cel.h"
#include "platform/store/CelStorage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace cutroom;
using testing::ElementsAre;

namespace {

const Cookie kClip('E', 1);
const Kv::FrameRate kRate(25, 1);

// A segment of `kClip` from `from` to `to` frames; its strip begins at 100 frames.
CelSegment clip(std::int64_t from, std::int64_t to) {
    CelSegment segment;
    segment.start = kRate.frameToFlicks(from);
    segment.end = kRate.frameToFlicks(to);
    segment.stripStart = kRate.frameToFlicks(100);
    segment.material = kClip;
    return segment;
}

Kv::Ptr<Cel> listOf(const std::vector<CelSegment>& segments) {
    auto cel = Kv::makePtr<Cel>();
    EXPECT_TRUE(cel->setSegments(segments).ok());
    return cel;
}

// The cuts of a list in frames.
std::vector<double> cuts(const Cel& cel) {
    std::vector<double> frames;
    for (std::uint32_t i = 0; i < cel.get_num_events(); i += 2)
        frames.push_back(cel.get_event(i).getTime() * 25);
    if (cel.get_num_events() > 0)
        frames.push_back(cel.getEndTime() * 25);
    return frames;
}

TEST(CelTest, beyondItsEndsAListAnswersNothing) {
    const Cel none;
    EXPECT_EQ(none.getStartTime(), kNoTime);
    EXPECT_EQ(none.get_significant_end_time(), kNoTime);
    EXPECT_EQ(none.get_strip_time(0), kNoTime);
    EXPECT_FALSE(none.get_strip_cookie(0).valid() || none.getHandle(0).valid());
    const auto cel = listOf({clip(10, 20), clip(20, 30)});
    EXPECT_FALSE(cel->find_ceh(kNoTime, 0).valid());
    EXPECT_EQ(cel->nextAfter(std::numeric_limits<Flicks>::max()), 4u);
    EXPECT_EQ(cel->lastBefore(std::numeric_limits<Flicks>::min()), -1);
}

TEST(CelTest, significantTimesLeaveBlackEndsOut) {
    const auto cel = listOf({clip(10, 20), clip(22, 30)});
    ASSERT_TRUE(cel->insertGap(kRate.frameToFlicks(10), kRate.frameToFlicks(5)).ok());
    ASSERT_TRUE(cel->insertGap(kRate.frameToFlicks(35), kRate.frameToFlicks(5)).ok());
    EXPECT_THAT(cuts(*cel), ElementsAre(10, 15, 25, 27, 35, 40));
    EXPECT_TRUE(cel->get_event(4).isBlack()) << "the gap between the segments";
    EXPECT_DOUBLE_EQ(cel->get_significant_start_time(), 0.6);
    EXPECT_DOUBLE_EQ(cel->get_significant_end_time(), 1.4);
}

TEST(CelTest, refusesWhatCannotLieOnAnEdit) {
    using Change = void (*)(CelSegment&);
    const Change rows[] = {
        [](CelSegment& s) { s.end = s.start; },
        [](CelSegment& s) { s.end = s.start - 1; },
        [](CelSegment& s) { s.end = kMaxFlicks + 1; },
        [](CelSegment& s) { s.start = -kMaxFlicks - 1; },
        [](CelSegment& s) { s.stripStart = std::numeric_limits<Flicks>::max(); },
        [](CelSegment& s) { s.speed = std::nan(""); },
        [](CelSegment& s) { s.speed = 1e308; },
    };
    const auto cel = listOf({clip(0, 10)});
    const auto before = cel->copy();
    for (const Change change : rows) {
        CelSegment bad = clip(0, 10);
        change(bad);
        EXPECT_FALSE(cel->overwrite(bad).ok() || cel->setSegments({bad}).ok());
    }
    EXPECT_FALSE(cel->setSegments({clip(0, 10), clip(9, 20)}).ok());
    EXPECT_FALSE(cel->insertGap(0, 0).ok());
    EXPECT_FALSE(cel->insertGap(0, kMaxFlicks).ok());
    EXPECT_FALSE(cel->slide(kNoTime).ok());
    EXPECT_FALSE(cel->slide(toSeconds(-kMaxFlicks) - 1).ok());
    const auto first = listOf({clip(10, 20)});
    ASSERT_TRUE(first->slide(toSeconds(-kMaxFlicks)).ok());
    EXPECT_FALSE(first->slide(-1).ok());
    EXPECT_EQ(first->checkConsistency(), "");
    EXPECT_FALSE(cel->lift({0, kNoTime}).ok());
    EXPECT_FALSE(cel->trim(9, 1).ok() || cel->setEvent(9, {}).ok() ||
                 cel->trim(1, kMaxFlicks).ok());
    EXPECT_FALSE(cel->split(kRate.frameToFlicks(10)).ok());
    EXPECT_FALSE(cel->overwriteFrom(*cel, 5, 5, 0).ok());
    EXPECT_FALSE(cel->overwriteFrom(*cel, -kMaxFlicks - 1, 5, 0).ok() ||
                 cel->overwriteFrom(*cel, 0, kMaxFlicks + 1, 0).ok() ||
                 cel->overwriteFrom(*cel, -5, 5, kMaxFlicks).ok());
    EXPECT_FALSE(cel->setDetail(1, {}).ok());
    EXPECT_FALSE(cel->simplify({0, 1}, CelSimplify::quantise, Kv::FrameRate()).ok());
    EXPECT_TRUE(cel->sameContents(*before));
}

TEST(CelTest, whatDoesNotHoldIsNamedWithItsSegment) {
    const std::pair<const char*, void (*)(CelStorage&)> rows[] = {
        {"", [](CelStorage&) {}},
        {"the events are no pairs", [](CelStorage& s) { s.events.pop_back(); }},
        {"in and out do not alternate in segment 0", [](CelStorage& s) { s.events[1].flags = 0; }},
        {"the end is not after the start in segment 1",
         [](CelStorage& s) { s.events[3].time = 10; }},
        {"the index of times differs in segment 0", [](CelStorage& s) { --s.starts[0]; }},
        {"the segment before does not touch in segment 1",
         [](CelStorage& s) { --s.events[1].time; }},
        {"the details are not one entry in segment 1",
         [](CelStorage& s) { s.events[2].detail = 1; }},
    };
    for (const auto& [trouble, change] : rows) {
        CelStorage storage;
        storage.replaceRange(
            0, 20,
            {blackPair(0, 10)[0], blackPair(0, 10)[1], blackPair(10, 20)[0], blackPair(10, 20)[1]});
        change(storage);
        const Shared<CelStorage> shared(std::move(storage));
        EXPECT_EQ(CelAccess::make(shared, 7, 0)->checkConsistency(), trouble);
    }
}

TEST(CelTest, effectsOnPointsLeaveWithTheirEnds) {
    CelSegment segment = clip(0, 30);
    segment.inGraph = IdStamp(1, 0, 0);
    segment.outGraph = IdStamp(2, 0, 0);
    const auto cel = listOf({segment});
    ASSERT_TRUE(cel->lift({0.4, 0.8}).ok());
    EXPECT_EQ(cel->getSegment(0).inGraph, segment.inGraph);
    EXPECT_FALSE(cel->getSegment(0).outGraph.valid());
    EXPECT_FALSE(cel->getSegment(2).inGraph.valid());
    EXPECT_EQ(cel->getSegment(2).outGraph, segment.outGraph);
    EXPECT_EQ(cel->getSegment(2).stripStart, kRate.frameToFlicks(120));
}

TEST(CelTest, eventsAreAppendedInPairs) {
    Cel cel;
    ChannelEvent in;
    in.material = kClip;
    ChannelEvent out = in;
    out.flags = kEventOut;
    out.time = out.stripTime = 100;
    EXPECT_FALSE(cel.addEvent(out).ok());
    ASSERT_TRUE(cel.addEvent(in).ok());
    EXPECT_EQ(cel.get_num_events(), 0u);
    EXPECT_FALSE(cel.addEvent(in).ok());
    ASSERT_TRUE(cel.addEvent(out).ok());
    in.time = 50;
    EXPECT_FALSE(cel.addEvent(in).ok()) << "before the end";
    for (const Flicks time : {100, 300}) { // at the end, and after black
        in.time = time;
        out.time = time + 100;
        ASSERT_TRUE(cel.addEvent(in, {L"late", {}, {}, {}}).ok() && cel.addEvent(out).ok());
    }
    EXPECT_EQ(cel.numSegments(), 4u);
    EXPECT_EQ(cel.getSegment(3).detail.name, L"late");
}

TEST(CelTest, quantisingMovesPointsToFramesAndDropsWhatVanishes) {
    const Flicks frame = kRate.frameToFlicks(1);
    CelSegment sliver = clip(0, 0);
    sliver.start = 10 * frame + 5;
    sliver.end = 10 * frame + frame / 3;
    CelSegment tail = clip(0, 20);
    tail.start = sliver.end;
    CelSegment head = clip(0, 0);
    head.end = sliver.start;
    const auto cel = listOf({head, sliver, tail});
    EXPECT_EQ(cel->checkQuantisation(kRate), 1u);
    ASSERT_TRUE(cel->simplify({0, 10}, CelSimplify::quantise, kRate).ok());
    EXPECT_THAT(cuts(*cel), ElementsAre(0, 10, 20));
    EXPECT_EQ(cel->checkQuantisation(kRate), 0u);
    EXPECT_EQ(cel->getSegment(1).stripStart, tail.stripStart - frame / 3);
    EXPECT_EQ(cel->checkConsistency(), "");
}

TEST(CelTest, handlesEndWithTheNumberingTheyWereMadeFor) {
    struct Row {
        const char* name;
        bool (*change)(Cel&);
        bool survives;
    };
    const Row rows[] = {
        {"trim", [](Cel& c) { return c.trim(1, 5).ok(); }, true},
        {"slide", [](Cel& c) { return c.slide(1).ok(); }, true},
        {"strip", [](Cel& c) { return c.setStripCookie(0, Cookie('E', 9)), true; }, true},
        {"overwrite", [](Cel& c) { return c.overwrite(clip(3, 4)).ok(); }, false},
        {"lift", [](Cel& c) { return c.lift(TimeRange(0, 0.1)).ok(); }, false},
        {"remove", [](Cel& c) { return c.remove(TimeRange(0, 0.1)).ok(); }, false},
        {"split", [](Cel& c) { return c.split(kRate.frameToFlicks(5)).ok(); }, false},
        {"assign", [](Cel& c) { return c.assign(*listOf({clip(0, 10)})), true; }, false},
        {"clear", [](Cel& c) { return c.clear(), true; }, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto cel = listOf({clip(0, 10), clip(10, 20)});
        const ce_handle handle(*cel, 1);
        ASSERT_TRUE(handle.valid());
        EXPECT_TRUE(row.change(*cel));
        EXPECT_EQ(handle.valid(), row.survives);
        EXPECT_EQ(handle.getIndex(), 1u);
        EXPECT_EQ(handle.get_edit_time() == kNoTime, !row.survives);
    }
}

TEST(CelTest, handlesKnowTheirNeighboursAndOrder) {
    auto cel = listOf({clip(0, 10), clip(10, 20)});
    const ce_handle out(*cel, 1);
    const ce_handle in = out.next();
    EXPECT_TRUE(out.is_out_point() && !in.is_out_point());
    EXPECT_EQ(out.get_edit_time(), in.get_edit_time());
    EXPECT_TRUE(in > out && !(out > in) && ce_handle(*cel, 3) > in);
    EXPECT_EQ(in.previous(), out);
    EXPECT_FALSE(ce_handle(*cel, 0).previous().valid() || ce_handle(*cel, 3).next().valid());
    cel.reset();
    EXPECT_FALSE(out.valid()) << "the list is gone";
    EXPECT_TRUE(in > out && !(in > in)) << "by index";
}

TEST(CelTest, piecesFromAnotherListBringTheirTexts) {
    CelSegment named = clip(0, 10);
    named.detail = {L"a", L"/media/a", "{}", {L"line"}};
    CelSegment other = clip(0, 10);
    other.detail.name = L"b";
    const auto source = listOf({named});
    const auto target = listOf({other});
    EXPECT_FALSE(source->sameContents(*target)) << "other texts";
    ASSERT_TRUE(target->overwriteFrom(*source, 0, named.end, other.end).ok());
    EXPECT_EQ(target->getSegment(0).detail, other.detail);
    EXPECT_EQ(target->getSegment(1).detail, named.detail);
}

} // namespace
