// What a listener may do; listeners that come, go and tell are played through in
// NotifierModelTest.cpp.
#include "platform/messaging/Notifier.h"
#include "platform/messaging/Notifiable.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "tests/support/LogLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using Lines = std::vector<std::string>;

constexpr int kType = 7;

// A notifier, what its listeners heard, and their guards.
class NotifierTest : public testing::Test {
protected:
    // A listener that writes its name and the text, then does `then`.
    Kv::Ptr<Guard> listen(const std::string& name, const std::function<void()>& then = {},
                          int type = kType) {
        return notifier->registerNotification(
            makeCallback<NotifyMsg>([this, name, then](const NotifyMsg& message) {
                heard.push_back(name + message.getText());
                if (then)
                    then();
            }),
            type);
    }
    Lines told(const std::string& text = "") {
        heard.clear();
        notifier->issueNotification(NotifyMsg(text), kType);
        return heard;
    }

    std::unique_ptr<Notifier> notifier = std::make_unique<Notifier>();
    Lines heard;
    Kv::Ptr<Guard> a, b, c, d;
};

TEST_F(NotifierTest, ATellingInsideATellingReachesNewcomersTheOuterOneDoesNot) {
    a = listen("a", [this] {
        if (heard.size() == 1) {
            b = listen("b"); // begins to listen before the telling inside
            notifier->issueNotification(NotifyMsg("inner"), kType);
        }
    });
    c = listen("c");
    EXPECT_THAT(told("outer"), ElementsAre("aouter", "ainner", "cinner", "binner", "couter"));
}

TEST_F(NotifierTest, WhatCannotListenGetsNoGuard) {
    EXPECT_FALSE(notifier->addListener({}, kType));
    EXPECT_FALSE(notifier->addListener(makeCallback<NotifyMsg>([](auto&) {}), -1));
    a = listen("a");
    EXPECT_FALSE(Notifier(*notifier).hasListeners()); // a copy has its own, empty list
}

TEST_F(NotifierTest, AListenerMayDestroyTheNotifier) {
    const auto token = std::make_shared<int>(0);
    a = listen("a", [this] {
        notifier->issueNotification(NotifyMsg(), kType + 1);
        EXPECT_EQ(heard.size(), 2u);
    });
    b = listen(
        "b", [this, token] { notifier.reset(); }, kType + 1);
    c = listen("c");
    told();
    EXPECT_THAT(heard, ElementsAre("a", "b"));
    EXPECT_EQ(token.use_count(), 1); // the callbacks went with it, guards or not
}

TEST_F(NotifierTest, ACallbackGoesWithItsGuardAndMayHoldIt) {
    const auto token = std::make_shared<int>(0);
    a = listen("a", [token] {});
    b = listen("b", [this] { a.reset(); });
    const auto once = std::make_shared<Kv::Ptr<Guard>>();
    *once = listen("once", [once] { once->reset(); });
    EXPECT_THAT(told(), ElementsAre("a", "b", "once"));
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_THAT(told(), ElementsAre("b"));
}

TEST_F(NotifierTest, WhatOneListenerThrowsTheOthersDoNotFeel) {
    const cutroom::test::LogLines log;
    a = listen("a", [] { throw std::runtime_error("broken"); });
    b = listen("b", [] { throw 5; });
    c = listen("c");
    EXPECT_THAT(told(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(log.lines,
                ElementsAre("Notifier: a listener failed: broken\n",
                            "Notifier: a listener failed: an object that is no exception\n"));
}

struct RunawayRow {
    const char* name;
    int listeners;
    std::size_t calls;
};

class Runaway : public NotifierTest, public testing::WithParamInterface<RunawayRow> {};

// Every listener tells again, so that nothing but the limit ends it.
TEST_P(Runaway, IsCutOffWithOneLineOfLog) {
    const cutroom::test::LogLines log;
    std::size_t calls = 0;
    const auto again = makeCallback<NotifyMsg>([&](auto&) {
        ++calls;
        notifier->call(NotifyMsg(), kType);
    });
    std::vector<Kv::Ptr<Guard>> guards;
    for (int i = 0; i < GetParam().listeners; ++i)
        guards.push_back(notifier->registerNotification(again, kType));
    a = listen("of another type", {}, kType + 1);
    notifier->call(NotifyMsg(), kType);
    EXPECT_EQ(calls, GetParam().calls);
    EXPECT_EQ(log.lines.size(), 1u);
    guards.clear();
    b = listen("as before");
    EXPECT_THAT(told(), ElementsAre("as before"));
}

INSTANTIATE_TEST_SUITE_P(Notifier, Runaway,
                         testing::Values(RunawayRow{"byDepth", 1, 1000},
                                         RunawayRow{"byCalls", 3, 10000},
                                         RunawayRow{"byCallsPerListener", 2000, 16008}),
                         [](const auto& row) { return row.param.name; });

TEST(Notifiable, EndsItsRegistrationsLastFirst) {
    struct Keeper : Notifiable {
        using Notifiable::endRegistrations;
        using Notifiable::keepRegistration;
    };
    Lines order;
    Keeper keeper;
    for (const char* name : {"first", "second"})
        keeper.keepRegistration(
            Kv::makePtr<Kv::ActionGuard>([&order, name] { order.push_back(name); }));
    const Keeper copy(keeper);
    keeper.endRegistrations();
    EXPECT_THAT(order, ElementsAre("second", "first"));
}

TEST(MsgTypes, NamesAndNumbersStayTogether) {
    NotifyMsgTypeDictionary& dictionary = NotifyMsgTypeDictionary::instance();
    const int focus = dictionary.intern("focusChanged");
    EXPECT_GE(focus, NotifyMsgTypeDictionary::kFirstType);
    EXPECT_EQ(dictionary.intern(std::string("focus") + "Changed"), focus);
    EXPECT_NE(dictionary.intern("focuschanged"), focus);
    EXPECT_EQ(dictionary.nameOf(focus), "focusChanged");
    EXPECT_EQ(dictionary.intern("valChanged"), NotifyMsgTypeDictionary::kValChanged);
    for (const int unknown : {-1, 0, 22, 1 << 30})
        EXPECT_EQ(dictionary.nameOf(unknown), "") << unknown;
}

} // namespace
