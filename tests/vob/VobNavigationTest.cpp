#include "platform/prefs/EditorPreferences.h"
#include "tests/support/Allocations.h"
#include "tests/support/Scale.h"
#include "tests/vob/VobFixture.h"

#include <cmath>
#include <limits>
#include <random>

using namespace cutroom::test;
using Kv::MarkTypes::In;
using Kv::MarkTypes::Out;
using testing::ElementsAre;

namespace {

Cue cueAt(double from, double to = kNoTime, unsigned flags = kCueVisible | kCueUser) {
    Cue cue(from, L"");
    cue.setEndTime(to);
    cue.setFlags(flags);
    return cue;
}

// V1 has cuts at 0 2 4 10, the unselected A1 at 0 3 6 10.
class VobNavigation : public VobFixture {
protected:
    VobNavigation() : edit_(makeEdit(10, 1, 1)) {
        layClip(edit_, edit_->getId(0), 2, 4);
        layClip(edit_, edit_->getId(1), 3, 6);
        vob_ = open(edit_);
        vob_->setSelected(1, false);
        vob_->setConsoleTabStops(Vob::kStopCuts);
    }
    // Puts a transition over the cut at `seconds` of V1, that many frames before and after it.
    void addTransition(double seconds, int before, int after, std::uint8_t side) {
        EffectGraph graph;
        graph.kind = "transition";
        graph.inOffset = k25.frameToFlicks(before);
        graph.outOffset = k25.frameToFlicks(after);
        const auto cel = edit_->get_edit_cel_p(0);
        const ce_handle point = cel->find_ceh(seconds, side);
        ChannelEvent event = point.getEvent();
        event.effectGraph = edit_->setEffectGraph(graph);
        ASSERT_TRUE(cel->setEvent(point.getIndex(), event).ok());
    }
    double next(double from) { return vob_->getNextEvent(from, false, false).time; }
    double previous(double from) { return vob_->getPrevEvent(from, false, false).time; }

    EditPtr edit_;
    Kv::Ptr<Vob> vob_;
};

// An edit with cuts and cues at random frames, and the times of its events in lists of their own.
struct RandomEdit {
    explicit RandomEdit(std::mt19937& random) : edit(makeEdit(20, 2, 1)) {
        const auto frame = [&] { return frameIn(random); };
        for (int chan = 0; chan < 2; ++chan) {
            const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(chan);
            for (int i = 0; i < 10; ++i)
                EXPECT_TRUE(cel->split(cutroom::toFlicks(frame())).ok());
            EXPECT_TRUE(cel->slide(chan == 0 ? 0 : frame()).ok());
            for (std::uint32_t i = 0; i < cel->get_num_events(); ++i)
                cuts.push_back(cel->get_event(i).getTime());
        }
        for (int i = 0; i < 10; ++i) {
            const double from = frame(), to = random() % 2 == 0 ? from + frame() : kNoTime;
            edit->addCue(cueAt(from, to));
            cues.insert(cues.end(), {from, to});
        }
    }
    static double frameIn(std::mt19937& random) { return static_cast<double>(random() % 500) / 25; }

    // The nearest event on one side, by a look at each.
    double nearest(double from, bool forward) const {
        double found = kNoTime;
        const auto look = [&](const std::vector<double>& times, double step) {
            for (const double time : times)
                if (forward ? time > from + step && time < found
                            : time < from - step && (found == kNoTime || time > found))
                    found = time;
        };
        look(cuts, 1e-6);
        look(cues, 0.04 - 1e-6);
        return found == kNoTime ? from : found;
    }

    EditPtr edit;
    std::vector<double> cuts, cues;
};

} // namespace

TEST_F(VobNavigation, StopsWhereTheTabStopsSay) {
    constexpr double kFar = std::numeric_limits<double>::infinity();
    const struct {
        const char* name;
        unsigned stops;
        double from;
        bool includeCurrent;
        double next, previous;
    } rows[] = {{"cuts of selected channels", 1, 2.2, false, 4, 2},
                {"cuts also without their bit", 0, 4, false, 10, 2},
                {"beyond the tolerance", 1, 2 - 2e-6, false, 2, 0},
                {"within it", 1, 2 - 0.5e-6, false, 4, 0},
                {"marks of all channels", 2, 2.2, false, 2.5, 2},
                {"marks within the tolerance", 2, 2.5 - 0.5e-6, false, 4, 2},
                {"cues, what is shown", 4, 5, false, 5.6, 4},
                {"ends of ranges", 4, 6, false, 6.4, 5.6},
                {"ranges given end first", 4, 8.5, false, 9, 6.4},
                {"second cues alone", 128, 5, false, 5.4, 4},
                {"cues a frame away", 4, 4.96, false, 5, 4},
                {"cues nearer than a frame", 4, 4.97, false, 5.6, 4},
                {"back over such", 4, 5.03, false, 5.6, 4},
                {"current time when asked", 8, 7.8, true, 8, 4},
                {"current time unasked", 8, 7.8, false, 10, 4},
                {"current time without its bit", 1, 7.8, true, 10, 4},
                {"after the last", 143, 10, true, 10, 9},
                {"before the first", 143, 0, true, 2, 0},
                {"from far before", 143, -kFar, true, 0, -kFar},
                {"from far behind", 143, kNoTime, true, kNoTime, 10}};
    edit_->addCue(cueAt(5));
    edit_->addCue(cueAt(5.2, kNoTime, kCueUser)); // not shown
    edit_->addCue(cueAt(5.4, kNoTime, kCueVisible | kCueSecondKind));
    edit_->addCue(cueAt(5.6, 6.4));
    edit_->addCue(cueAt(9, 8.8));
    vob_->storeMarkTime(edit_->getId(1), 2.5, In); // of an unselected channel
    vob_->storeMarkTime(edit_->getId(0), 7.5, Out);
    vob_->storeCurrentTime(8);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        vob_->setConsoleTabStops(row.stops);
        const EventInfo after = vob_->getNextEvent(row.from, false, row.includeCurrent);
        const EventInfo before = vob_->getPrevEvent(row.from, false, row.includeCurrent);
        EXPECT_EQ(after.time, row.next);
        EXPECT_EQ(before.time, row.previous);
        for (const EventInfo& info : {after, before}) {
            EXPECT_EQ(info.startTime, row.from);
            EXPECT_EQ(info.channel, edit_->getId(0));
            EXPECT_EQ(info.kind, 0);
            EXPECT_EQ(info.found(), info.time != row.from);
        }
    }
}

TEST_F(VobNavigation, FindsWhatALookAtEveryEventFinds) {
    std::mt19937 random(7);
    for (long round = 0; round < rounds(20, 500); ++round) {
        const RandomEdit plain(random);
        const auto vob = open(plain.edit);
        vob->setSelected(2, false);
        for (int i = 0; i < 50; ++i) {
            const double from = RandomEdit::frameIn(random);
            ASSERT_EQ(vob->getNextEvent(from, false, false).time, plain.nearest(from, true));
            ASSERT_EQ(vob->getPrevEvent(from, false, false).time, plain.nearest(from, false));
        }
    }
}

TEST_F(VobNavigation, StopsAtTheMiddlesOfTransitionsWhenTheUserLikesIt) {
    addTransition(2, 0, 20, 0);           // middle 2.4
    addTransition(4, 30, 10, kEventOut);  // middle 3.6
    addTransition(10, 4, 900, kEventOut); // nothing lies behind the end
    EXPECT_EQ(next(2), 4.0);
    Vob::setStopAtTransitionMidPoints(true);
    EXPECT_EQ(vob_->getConsoleTabStops(), 1u);
    std::vector<double> forward, back;
    for (double time = 0; next(time) != time;)
        forward.push_back(time = next(time));
    for (double time = 10; previous(time) != time;)
        back.push_back(time = previous(time));
    EXPECT_THAT(forward, ElementsAre(2, 2.4, 3.6, 4, 10));
    EXPECT_THAT(back, ElementsAre(4, 3.6, 2.4, 2, 0));
    EXPECT_EQ(vob_->getConsoleTabStops(), 65u);
}

TEST_F(VobNavigation, WithoutEditOrEventsTheTimeStays) {
    vob_->setSelected(0, false);
    EXPECT_EQ(next(1), 1.0);
    EXPECT_FALSE(vob_->getNextEvent(1, false, false).channel.valid());
    EXPECT_FALSE(vob_->setTimeToFirstEvent());
    const double nowhere = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(next(nowhere)));
    EXPECT_FALSE(vob_->getNextEvent(nowhere, false, false).found());
    const auto nothing = openNothing();
    EXPECT_EQ(nothing->getNextEvent(1, false, true).time, 1.0);
    EXPECT_FALSE(nothing->setTimeToLastEvent());
}

TEST_F(VobNavigation, TakesNothingFromTheHeap) {
    Vob::setStopAtTransitionMidPoints(true);
    addTransition(4, 10, 10, 0);
    edit_->addCue(cueAt(5, 6));
    vob_->storeMarkTime(0, 3, In);
    vob_->setConsoleTabStops(Vob::kStopDefault);
    const double first = next(0);
    const std::size_t before = allocations();
    double sum = first;
    for (double time = 0; time < 10; time += 0.5)
        sum += next(time) - previous(time);
    EXPECT_EQ(allocations(), before);
    EXPECT_GT(sum, 0);
}
