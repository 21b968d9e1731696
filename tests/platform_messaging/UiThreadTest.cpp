#include "platform/messaging/EventQueue.h"
#include "platform/messaging/Notifier.h"
#include "platform/messaging/UIThreadCallback.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;

// The thread that makes it is the user-interface thread; posted work waits for `pump`.
class TestUiThread final : public cutroom::iUiThread {
public:
    TestUiThread() : before_(cutroom::installUiThread(this)) {}
    ~TestUiThread() override { cutroom::installUiThread(before_); }

    bool isUiThread() const noexcept override { return std::this_thread::get_id() == own_; }
    void post(std::function<void()> work) override {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(work));
    }
    std::size_t pump() {
        std::size_t ran = 0;
        for (;; ++ran) {
            std::function<void()> work;
            {
                const std::lock_guard lock(mutex_);
                if (posted_.empty())
                    return ran;
                work = std::move(posted_.front());
                posted_.pop_front();
            }
            work();
        }
    }

private:
    const std::thread::id own_ = std::this_thread::get_id();
    iUiThread* const before_;
    std::mutex mutex_;
    std::deque<std::function<void()>> posted_; // guarded by mutex_
};

class UiThreadCallbackTest : public testing::Test {
public:
    void hear(const NotifyMsg& message) {
        EXPECT_TRUE(cutroom::isUiThread());
        heard.push_back(message.getText());
    }

protected:
    void tell(const char* text) { notifier.issueNotification(NotifyMsg(text), 1); }
    void tellElsewhere(const char* text) {
        std::thread([&] { tell(text); }).join();
    }

    TestUiThread ui;
    Notifier notifier;
    std::vector<std::string> heard;
    Kv::Ptr<UIThreadCallback<NotifyMsg>> callback =
        makeUIThreadCallback(this, &UiThreadCallbackTest::hear);
    Kv::Ptr<Guard> guard = notifier.registerNotification(callback, 1);
};

TEST_F(UiThreadCallbackTest, CallsAtOnceHereAndPostsFromElsewhere) {
    tellElsewhere("posted");
    EXPECT_THAT(heard, ElementsAre());
    tell("direct");
    EXPECT_THAT(heard, ElementsAre("direct"));
    EXPECT_EQ(ui.pump(), 1u);
    EXPECT_THAT(heard, ElementsAre("direct", "posted"));
}

TEST_F(UiThreadCallbackTest, TheConditionIsAskedAtDelivery) {
    bool open = false;
    callback->setDeliveryCondition([&](const NotifyMsg& message) {
        EXPECT_TRUE(cutroom::isUiThread());
        return open && message.getText() != "never";
    });
    tellElsewhere("early"); // not open yet, but it will be
    tell("closed");
    open = true;
    tell("never");
    ui.pump();
    EXPECT_THAT(heard, ElementsAre("early"));
}

TEST_F(UiThreadCallbackTest, NothingPostedIsDeliveredAfterTheGuardIsDropped) {
    tellElsewhere("late");
    guard.reset();
    EXPECT_EQ(ui.pump(), 1u);
    EXPECT_THAT(heard, ElementsAre());
}

TEST_F(UiThreadCallbackTest, AnotherRegistrationKeepsDelivering) {
    Notifier other;
    const Kv::Ptr<Guard> second = other.registerNotification(callback, 1);
    tellElsewhere("kept");
    guard.reset();
    ui.pump();
    EXPECT_THAT(heard, ElementsAre("kept"));
}

TEST_F(UiThreadCallbackTest, TheEndOfTheNotifierEndsDelivery) {
    auto shortLived = std::make_unique<Notifier>();
    const auto own = makeUIThreadCallback(this, &UiThreadCallbackTest::hear);
    const Kv::Ptr<Guard> registration = shortLived->registerNotification(own, 1);
    std::thread([&] { shortLived->issueNotification(NotifyMsg("late"), 1); }).join();
    shortLived.reset();
    ui.pump();
    EXPECT_THAT(heard, ElementsAre());
}

TEST(UiThread, WithoutOneEveryThreadIsIt) {
    EXPECT_EQ(cutroom::uiThread(), nullptr);
    int runs = 0;
    std::thread([&] {
        EXPECT_TRUE(cutroom::isUiThread());
        cutroom::postToUiThread([&] { ++runs; });
        EXPECT_EQ(runs, 1);
    }).join();
}

class TestQueue final : public cutroom::iEventQueue {
public:
    TestQueue() : before_(cutroom::installEventQueue(this)) {}
    ~TestQueue() override { cutroom::installEventQueue(before_); }
    void post(const Event& event) override { waiting.push_back(event); }
    bool postUnlessWaiting(const Event& event) override {
        for (const Event& other : waiting) {
            if (other.sameAs(event))
                return false;
        }
        post(event);
        return true;
    }
    void removeEventsFor(const EventHandler* handler) noexcept override {
        std::erase_if(waiting, [&](const Event& event) { return event.handler == handler; });
    }
    std::vector<Event> waiting;

private:
    iEventQueue* const before_;
};

TEST(Events, GoNowhereWithoutQueueOrHandler) {
    EventHandler handler;
    EXPECT_FALSE(event_send(Event{&handler}));
    EXPECT_FALSE(event_send_idempotent({&handler}));
    EXPECT_EQ(handler.handleEvent({}), EventHandler::kNotConsumed);
    TestQueue queue;
    EXPECT_FALSE(event_send({nullptr}));
    EXPECT_FALSE(event_send_idempotent({nullptr}));
    EXPECT_TRUE(queue.waiting.empty());
}

TEST(Events, AnEqualOneThatWaitsIsEnough) {
    TestQueue queue;
    EventHandler handler;
    EventHandler other;
    const Event event{&handler, Event::kChangeType, 1, "0 -1 0.0.0", 2, {}};
    EXPECT_TRUE(event_send_idempotent(event));
    EXPECT_FALSE(event_send_idempotent(event));
    Event withObject = event;
    withObject.data = Kv::makePtr<iObject>();
    EXPECT_FALSE(event_send_idempotent(withObject)); // the object does not count
    EXPECT_TRUE(event_send(event));
    std::vector<Event> different(5, event);
    different[0].handler = &other;
    different[1].type = 1;
    different[2].keyCode = 0;
    different[3].text += ' ';
    different[4].value = 3;
    for (const Event& each : different)
        EXPECT_TRUE(event_send_idempotent(each));
    EXPECT_EQ(queue.waiting.size(), 7u);
}

TEST(Events, GoWithTheirHandler) {
    TestQueue queue;
    EventHandler stays;
    {
        EventHandler goes;
        const EventHandler copy(goes);
        event_send({&goes});
        event_send({&stays});
        event_send({&goes});
    }
    ASSERT_EQ(queue.waiting.size(), 1u);
    EXPECT_EQ(queue.waiting[0].handler, &stays);
}

} // namespace
