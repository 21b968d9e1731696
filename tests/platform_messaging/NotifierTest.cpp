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

// A notifier, what its listeners heard, and the guards of the listeners by number.
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

TEST_F(NotifierTest, ListenersOfTheTypeAreToldInOrderOfRegistration) {
    a = listen("a");
    b = listen("b", {}, kType + 1);
    c = listen("c");
    d = listen("d");
    EXPECT_THAT(told("1"), ElementsAre("a1", "c1", "d1"));
    EXPECT_EQ(notifier->numListeners(), 4u);
    c.reset();
    EXPECT_THAT(told("2"), ElementsAre("a2", "d2"));
    c = listen("c");
    EXPECT_THAT(told("3"), ElementsAre("a3", "d3", "c3"));
}

TEST_F(NotifierTest, TheMessageCarriesTypeTextAndObject) {
    const Kv::Ptr<iObject> object = Kv::makePtr<iObject>();
    int plain = 0;
    std::vector<NotifyMsg> seen;
    a = notifier->registerNotification(
        makeCallback<NotifyMsg>([&](const NotifyMsg& message) { seen.push_back(message); }), kType);
    notifier->issueNotification(NotifyMsg(object, "shared"), kType);
    notifier->issueNotification(NotifyMsg(&plain), kType);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].getType(), kType);
    EXPECT_EQ(seen[0].getText(), "shared");
    EXPECT_EQ(seen[0].getObject(), object);
    EXPECT_EQ(seen[0].getObjectAs<iObject>(), object.get());
    EXPECT_EQ(seen[1].getPointer(), &plain);
    EXPECT_FALSE(seen[1].getObject());
}

TEST_F(NotifierTest, WhatCannotListenGetsNoGuard) {
    EXPECT_FALSE(notifier->addListener({}, kType));
    EXPECT_FALSE(notifier->addListener(makeCallback<NotifyMsg>([](const NotifyMsg&) {}), -1));
    EXPECT_FALSE(notifier->hasListeners());
}

TEST_F(NotifierTest, AListenerMayEndItselfAndOthersWhileItIsTold) {
    a = listen("a", [this] { a.reset(); });
    b = listen("b", [this] {
        d.reset();
        a.reset();
    });
    c = listen("c");
    d = listen("d");
    EXPECT_THAT(told(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(notifier->numListeners(), 2u);
    EXPECT_THAT(told(), ElementsAre("b", "c"));
}

TEST_F(NotifierTest, AListenerAddedDuringATellingHearsTheNextOne) {
    const auto addC = [this] {
        if (!c)
            c = listen("c");
    };
    a = listen("a", [this, addC] {
        if (!b)
            b = listen("b", addC);
    });
    EXPECT_THAT(told("1"), ElementsAre("a1"));
    EXPECT_THAT(told("2"), ElementsAre("a2", "b2"));
    EXPECT_THAT(told("3"), ElementsAre("a3", "b3", "c3"));
}

TEST_F(NotifierTest, ATellingInsideATellingReachesEveryoneOnceMore) {
    a = listen("a", [this] {
        if (heard.size() == 1) {
            b = listen("b"); // begins to listen before the telling inside
            notifier->issueNotification(NotifyMsg("inner"), kType);
        }
    });
    c = listen("c");
    EXPECT_THAT(told("outer"), ElementsAre("aouter", "ainner", "cinner", "binner", "couter"));
}

TEST_F(NotifierTest, AGuardMayOutliveTheNotifier) {
    a = listen("a");
    notifier.reset();
    a.reset();
    EXPECT_TRUE(heard.empty());
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
    // The callbacks went with it, guards or not.
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(NotifierTest, ACallbackGoesWithItsGuard) {
    const auto token = std::make_shared<int>(0);
    a = listen("a", [token] {});
    b = listen("b", [this] { a.reset(); });
    EXPECT_EQ(token.use_count(), 2);
    told();
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(NotifierTest, ACallbackMayHoldTheGuardOfItsOwnRegistration) {
    const auto once = std::make_shared<Kv::Ptr<Guard>>();
    const std::weak_ptr<Kv::Ptr<Guard>> watched = once;
    *once = listen("once", [once] { once->reset(); });
    EXPECT_THAT(told(), ElementsAre("once"));
    EXPECT_THAT(told(), ElementsAre());
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

TEST_F(NotifierTest, ACopyHasItsOwnEmptyList) {
    a = listen("a");
    Notifier copy(*notifier);
    EXPECT_FALSE(copy.hasListeners());
    copy = *notifier;
    EXPECT_FALSE(copy.hasListeners());
    EXPECT_EQ(notifier->numListeners(), 1u);
}

struct RunawayRow {
    const char* name;
    int listeners;
    std::size_t atLeast;
    std::size_t atMost;
};

class Runaway : public testing::TestWithParam<RunawayRow> {};

// Every listener tells again, so that nothing but the limit ends it.
TEST_P(Runaway, IsCutOffWithOneLineOfLog) {
    const cutroom::test::LogLines log;
    Notifier notifier;
    std::size_t calls = 0;
    std::vector<Kv::Ptr<Guard>> guards;
    guards.reserve(static_cast<std::size_t>(GetParam().listeners) + 1);
    for (int i = 0; i < GetParam().listeners; ++i)
        guards.push_back(notifier.registerNotification(makeCallback<NotifyMsg>([&](auto&) {
                                                           ++calls;
                                                           notifier.call(NotifyMsg(), kType);
                                                       }),
                                                       kType));
    guards.push_back(notifier.registerNotification(
        makeCallback<NotifyMsg>([](auto&) { FAIL() << "of another type"; }), kType + 1));
    notifier.call(NotifyMsg(), kType);
    EXPECT_GE(calls, GetParam().atLeast);
    EXPECT_LE(calls, GetParam().atMost);
    EXPECT_EQ(log.lines.size(), 1u);
    // The notifier works as before.
    guards.erase(guards.begin(), guards.end() - 1);
    guards[0] =
        notifier.registerNotification(makeCallback<NotifyMsg>([&](auto&) { calls = 0; }), kType);
    notifier.call(NotifyMsg(), kType);
    EXPECT_EQ(calls, 0u);
}

INSTANTIATE_TEST_SUITE_P(Notifier, Runaway,
                         testing::Values(RunawayRow{"byDepth", 1, 1000, 1000},
                                         RunawayRow{"byCalls", 3, 10000, 10000},
                                         RunawayRow{"byCallsPerListener", 2000, 16008, 16008}),
                         [](const auto& row) { return row.param.name; });

TEST_F(NotifierTest, ListenersThatBreedAreNotToldInTheSameTelling) {
    std::vector<Kv::Ptr<Guard>> bred;
    a = listen("a", [&] {
        for (int i = 0; i < 100; ++i)
            bred.push_back(listen("b", [&] { bred.push_back(listen("c")); }));
    });
    EXPECT_EQ(told().size(), 1u);
    EXPECT_EQ(told().size(), 101u);
    EXPECT_EQ(notifier->numListeners(), 301u);
}

TEST_F(NotifierTest, ANotifiableEndsItsRegistrationsLastFirst) {
    struct Keeper : Notifiable {
        using Notifiable::endRegistrations;
        using Notifiable::keepRegistration;
    };
    Lines order;
    const auto mark = [&](const char* name) {
        return Kv::makePtr<Kv::ActionGuard>([&order, name] { order.push_back(name); });
    };
    Keeper keeper;
    keeper.keepRegistration(mark("first"));
    keeper.keepRegistration(mark("second"));
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
    EXPECT_EQ(dictionary.nameOf(dictionary.generalChangeMsgType()), "generalChange");
    for (const int unknown : {-1, 0, 22, 1 << 30})
        EXPECT_EQ(dictionary.nameOf(unknown), "") << unknown;
}

} // namespace
