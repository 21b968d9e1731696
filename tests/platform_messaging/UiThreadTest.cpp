// The queue of events itself is tested with the loop that has one.
#include "platform/messaging/EventQueue.h"
#include "platform/messaging/Notifier.h"
#include "platform/messaging/UIThreadCallback.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <latch>
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
    void pump() {
        std::deque<std::function<void()>> due;
        {
            const std::lock_guard lock(mutex_);
            due.swap(posted_);
        }
        for (const auto& work : due)
            work();
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
    void tell(const char* text) { notifier->issueNotification(NotifyMsg(text), 1); }
    void tellElsewhere(const char* text) {
        std::thread([&] { tell(text); }).join();
    }

    TestUiThread ui;
    std::unique_ptr<Notifier> notifier = std::make_unique<Notifier>();
    Notifier other;
    std::vector<std::string> heard;
    Kv::Ptr<UIThreadCallback<NotifyMsg>> callback =
        makeUIThreadCallback(this, &UiThreadCallbackTest::hear);
    Kv::Ptr<Guard> guard = notifier->registerNotification(callback, 1);
};

TEST_F(UiThreadCallbackTest, CallsAtOnceHereAndPostsFromElsewhere) {
    tellElsewhere("posted");
    tell("direct");
    EXPECT_THAT(heard, ElementsAre("direct"));
    ui.pump();
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

TEST_F(UiThreadCallbackTest, WhatIsPostedGoesWithTheLastRegistration) {
    tellElsewhere("late");
    Kv::Ptr<Guard> second = other.registerNotification(callback, 1);
    tellElsewhere("kept");
    guard.reset();
    ui.pump();
    EXPECT_THAT(heard, ElementsAre("late", "kept"));
    guard = notifier->registerNotification(callback, 1);
    second.reset();
    tellElsewhere("never");
    notifier.reset(); // ends the last one as its guard would
    ui.pump();
    EXPECT_THAT(heard, ElementsAre("late", "kept"));
    second = other.registerNotification(callback, 1);
    std::thread([&] { other.issueNotification(NotifyMsg("again"), 1); }).join();
    ui.pump();
    EXPECT_EQ(heard.back(), "again");
}

TEST_F(UiThreadCallbackTest, WhatIsPostedGoesWithAGuardThatCannotWaitForTheTelling) {
    std::latch posted(1), go(1);
    const auto slow = notifier->registerNotification(makeCallback<NotifyMsg>([&](const NotifyMsg&) {
                                                         posted.count_down();
                                                         go.wait();
                                                     }),
                                                     1);
    std::thread teller([&] { tell("late"); });
    posted.wait();
    const auto dropper = other.registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg&) { guard.reset(); }), 1);
    other.issueNotification(NotifyMsg("drop"), 1);
    ui.pump();
    EXPECT_TRUE(heard.empty());
    go.count_down();
    teller.join();
}

TEST(UiThread, WithoutOneEveryThreadIsItAndEventsGoNowhere) {
    int runs = 0;
    std::thread([&] {
        EXPECT_TRUE(cutroom::isUiThread());
        cutroom::postToUiThread([&] { ++runs; });
        EXPECT_EQ(runs, 1);
    }).join();
    EventHandler handler;
    for (EventHandler* const to : {&handler, static_cast<EventHandler*>(nullptr)}) {
        EXPECT_FALSE(event_send({to}));
        EXPECT_FALSE(event_send_idempotent({to}));
    }
    EXPECT_EQ(handler.handleEvent({}), EventHandler::kNotConsumed);
}

} // namespace
