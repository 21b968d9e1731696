#include "platform/embedded/EmbeddedHost.h"

#include "platform/messaging/Event.h"
#include "tests/support/LogLines.h"

#include <gmock/gmock.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace cutroom;
using cutroom::test::LogLines;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class LoopTest : public testing::Test {
protected:
    LogLines log;
    EmbeddedHost host{EmbeddedHost::repeatable()};
    EmbeddedLoop& loop = host.loop();
    std::vector<std::string> story;

    void tell(const std::string& what) { story.push_back(what); }
    double now() const { return Host::clock().now(); }
};

class Recorder final : public EventHandler {
public:
    explicit Recorder(std::vector<std::string>& story) : story_(story) {}
    eResult handleEvent(const Event& event) override {
        story_.push_back(event.text + std::to_string(event.keyCode));
        return kConsumed;
    }

private:
    std::vector<std::string>& story_;
};

Event eventFor(EventHandler& handler, const std::string& text, int key = 0) {
    Event event;
    event.handler = &handler;
    event.type = Event::kChangeType;
    event.keyCode = key;
    event.text = text;
    return event;
}

struct Cargo : iObject {
    explicit Cargo(std::vector<std::string>& told) : story(told) {}
    ~Cargo() override {
        story.push_back("cargo gone");
        postToUiThread([] {}); // the queue must not be locked now
    }
    std::vector<std::string>& story;
};

} // namespace

TEST_F(LoopTest, EventsAndPostedWorkKeepOneOrder) {
    Recorder recorder(story);
    event_send(eventFor(recorder, "a"));
    postToUiThread([&] { tell("work"); });
    event_send(eventFor(recorder, "b", 2));
    EXPECT_THAT(story, IsEmpty());
    EXPECT_EQ(loop.pump(), 3u);
    EXPECT_THAT(story, ElementsAre("a0", "work", "b2"));
}

TEST_F(LoopTest, AnEventEqualToOneThatWaitsIsDropped) {
    Recorder one(story), other(story);
    const Event first = eventFor(one, "x", 1);
    const struct {
        const char* name;
        void (*change)(Event&, EventHandler&);
        bool sent;
    } rows[] = {
        {"the same", [](Event&, EventHandler&) {}, false},
        {"other data", [](Event& e, EventHandler&) { e.data.reset(); }, false},
        {"other handler", [](Event& e, EventHandler& h) { e.handler = &h; }, true},
        {"other type", [](Event& e, EventHandler&) { e.type = 5; }, true},
        {"other key", [](Event& e, EventHandler&) { e.keyCode = 2; }, true},
        {"other text", [](Event& e, EventHandler&) { e.text = "y"; }, true},
        {"other value", [](Event& e, EventHandler&) { e.value = 9; }, true},
    };
    for (const auto& row : rows) {
        Event with = first;
        with.data = Kv::makePtr<Cargo>(story);
        ASSERT_TRUE(event_send_idempotent(with));
        Event changed = with;
        row.change(changed, other);
        EXPECT_EQ(event_send_idempotent(changed), row.sent) << row.name;
        loop.pump();
        EXPECT_TRUE(event_send_idempotent(first)) << row.name << ": nothing waits any more";
        EXPECT_EQ(loop.waiting(), 1u);
        loop.pump();
    }
}

TEST_F(LoopTest, AnEventMayBeSentAgainWhileItIsHandled) {
    struct Again final : EventHandler {
        eResult handleEvent(const Event& event) override {
            sent = event_send_idempotent(event);
            return kConsumed;
        }
        bool sent = false;
    } again;
    loop.post(eventFor(again, "x"));
    loop.runUntil([&] { return again.sent; });
    EXPECT_EQ(loop.waiting(), 1u);
}

TEST_F(LoopTest, AHandlerTakesItsEventsAlong) {
    Recorder stays(story);
    {
        Recorder goes(story);
        Event carrying = eventFor(goes, "lost");
        carrying.data = Kv::makePtr<Cargo>(story);
        event_send(carrying);
        event_send(eventFor(stays, "kept"));
    }
    loop.pump();
    EXPECT_THAT(story, ElementsAre("cargo gone", "kept0"));
    EXPECT_TRUE(event_send_idempotent(eventFor(stays, "lost")));
}

TEST_F(LoopTest, WhatIsCalledMayThrowPumpAndDestroyItsNeighbours) {
    auto victim = std::make_unique<Recorder>(story);
    loop.post([] { throw std::runtime_error("bad"); });
    loop.post([&] { victim.reset(); });
    event_send(eventFor(*victim, "never"));
    loop.post([&] {
        loop.post([&] { tell("inner"); });
        loop.pump();
        tell("outer");
    });
    loop.pump();
    EXPECT_THAT(story, ElementsAre("inner", "outer"));
    EXPECT_THAT(log.lines, ElementsAre("Event loop: what was called threw: bad\n"));
}

TEST_F(LoopTest, AQueueThatRefillsItselfDoesNotHangThePump) {
    std::function<void()> again = [&] { loop.post(again); };
    again();
    EXPECT_EQ(loop.pump(), std::size_t{EmbeddedLoop::kMostTurns});
    EXPECT_EQ(log.lines.size(), 1u);
    again = nullptr;
    EXPECT_EQ(loop.pump(), 1u);
}

TEST_F(LoopTest, TimersComeAtTheirTimesAndInOrder) {
    std::vector<double> times;
    const auto slow = loop.addTimer(0.5, 0.5, [&] { times.push_back(now()); });
    const auto once = loop.addTimer(0.75, 0, [&] { times.push_back(-now()); });
    loop.runFor(1.5);
    EXPECT_THAT(times, ElementsAre(0.5, -0.75, 1.0, 1.5));
    EXPECT_EQ(now(), 1.5);
}

TEST_F(LoopTest, WhatIsNoTimeIsAtOnceAndHoldsUpNobody) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    const auto first = loop.addTimer(0.5, none, [&] { tell("no period"); });
    const auto second = loop.addTimer(none, 0, [&] { tell("no delay"); });
    const auto third = loop.addTimer(1, 0, [&] { tell("third"); });
    loop.runFor(2);
    EXPECT_THAT(story, ElementsAre("no delay", "no period", "third"));
    EXPECT_FALSE(loop.runUntil([] { return false; }, none));
}

TEST_F(LoopTest, ManyPeriodsDoNotDriftAndMissedCallsAreNotMadeUpFor) {
    int count = 0;
    const auto timer = loop.addTimer(0.1, 0.1, [&] { ++count; });
    loop.runFor(1000.05);
    EXPECT_EQ(count, 10000);
    host.manualClock().advance(3.5);
    loop.pump();
    EXPECT_EQ(count, 10001);
    loop.runFor(0.1);
    EXPECT_EQ(count, 10002);
}

TEST_F(LoopTest, ATimerEndsWithItsGuardAlsoFromInside) {
    Kv::Ptr<Guard> own;
    Kv::Ptr<Guard> other = loop.addTimer(2, 0, [&] { tell("other"); });
    own = loop.addTimer(1, 1, [&] {
        tell("own");
        other.reset();
        own.reset();
        tell("still there");
    });
    loop.runFor(5);
    EXPECT_THAT(story, ElementsAre("own", "still there"));
}

TEST_F(LoopTest, AGuardMayOutliveItsLoop) {
    Kv::Ptr<Guard> guard;
    ManualClock clock;
    int count = 0;
    {
        EmbeddedLoop brief(clock);
        guard = brief.addTimer(0, 0, [&] { ++count; });
        brief.post([&] { ++count; });
    }
    guard.reset();
    EXPECT_EQ(count, 0);
}

TEST_F(LoopTest, RunsEndByConditionTimeAndQuit) {
    const auto tick = loop.addTimer(1, 1, [&] { tell("tick"); });
    EXPECT_TRUE(loop.runUntil([&] { return story.size() == 2; }, 10));
    EXPECT_EQ(now(), 2.0);
    EXPECT_FALSE(loop.runUntil([&] { return story.size() == 9; }, 3.5));
    EXPECT_EQ(now(), 5.5);
    const auto stopper = loop.addTimer(2.0, 0, [&] { loop.quit(); });
    loop.run();
    EXPECT_EQ(now(), 7.5);
    loop.runFor(1);
    EXPECT_EQ(now(), 8.5) << "one quit ends one run";
}

TEST_F(LoopTest, DrainingLeavesTimersAlone) {
    const auto due = loop.addTimer(0, 0, [&] { tell("timer"); });
    loop.post([&] { loop.post([&] { tell("posted"); }); });
    loop.drain();
    EXPECT_THAT(story, ElementsAre("posted"));
    loop.pump();
    EXPECT_THAT(story, ElementsAre("posted", "timer"));
}
