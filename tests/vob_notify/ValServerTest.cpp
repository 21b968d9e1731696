#include "vob/notify/ValServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using Event = NotifierEvent<double>;

constexpr int kChanged = ValServerBase::valChangedMsgType;
constexpr int kBefore = ValServerBase::preValChangedMsgType;

// What a listener of one message type of a server heard; each time it does `then`.
struct Heard {
    explicit Heard(ValServer<double>& server, int msgType = kChanged,
                   std::function<void(const Event&)> then = {}) {
        const auto callback = makeCallback<Event>([=, this](const Event& event) {
            EXPECT_EQ(event.getMsgType(), msgType);
            values.push_back(event.getValue());
            sender = event.getSender();
            if (then)
                then(event);
        });
        guard = server.registerNotification(callback, msgType);
    }

    Kv::Ptr<Guard> guard;
    std::vector<double> values;
    const NotifierBase* sender = nullptr;
};

TEST(ValServerTest, EveryAssignmentIsToldAlsoOfAnEqualValue) {
    ValServer<double> server(1.0);
    const Heard heard(server);
    server = 2.0;
    server = 2.0;
    EXPECT_TRUE(server.updateAndNotify(3.0));
    ValServer<double> other(4.0);
    EXPECT_EQ(other.lastChange(), 0u);
    other = 5.0;
    EXPECT_GT(other.lastChange(), server.lastChange());
    server = other;
    EXPECT_GT(server.lastChange(), other.lastChange());
    server = std::as_const(server);
    EXPECT_THAT(heard.values, ElementsAre(2.0, 2.0, 3.0, 5.0, 5.0));
    EXPECT_EQ(heard.sender, &server);
    EXPECT_TRUE(server == other);
    EXPECT_EQ(static_cast<double>(server), 5.0);
}

TEST(ValServerTest, TypesAreKeptApartAndTheValueInPlaceChangesInSilence) {
    ValServer<double> server(1.0);
    const Heard after(server);
    const Heard before(server, kBefore);
    const Heard own(server, 99);
    server.preNotifyValChanged();
    server.getDataRef() = 2.0;
    EXPECT_TRUE(after.values.empty());
    server.notifyValChanged();
    server.issueNotification(Event(0, 7.0, nullptr), 99);
    EXPECT_THAT(before.values, ElementsAre(1.0));
    EXPECT_THAT(after.values, ElementsAre(2.0));
    EXPECT_THAT(own.values, ElementsAre(7.0));
    EXPECT_EQ(server.numClients(), 3u);
}

TEST(ValServerTest, ATellingInsideATellingLeavesEachListenerTheValueOfItsEvent) {
    ValServer<double> server;
    const Heard first(server, kChanged, [&](const Event& event) {
        if (event.getValue() == 1.0)
            server = 2.0;
    });
    const Heard second(server);
    server = 1.0;
    EXPECT_THAT(second.values, ElementsAre(2.0, 1.0));
    EXPECT_EQ(server.getValue(), 2.0);
}

// Refuses negative values and limits others to 10.
struct Bounds final : ValManagerBase<double> {
    bool validate(ValServer<double>& server, double& value) override {
        asked.emplace_back(server.getValue(), value);
        value = std::min(value, 10.0);
        return value >= 0;
    }
    std::vector<std::pair<double, double>> asked;
};

TEST(ValServerTest, TheManagerAdjustsOrRefusesAndACopyHasNone) {
    Bounds bounds;
    ValServer<double> server(1.0, &bounds);
    const Heard heard(server);
    EXPECT_FALSE(server.updateAndNotify(-5.0));
    EXPECT_EQ(server.getValue(), 1.0);
    EXPECT_TRUE(heard.values.empty());
    EXPECT_TRUE(server.updateAndNotify(50.0));
    ValServer<double> copy(server);
    EXPECT_EQ(copy.numClients(), 0u);
    copy = -1.0;
    EXPECT_EQ(copy.getValue(), -1.0);
    EXPECT_THAT(heard.values, ElementsAre(10.0));
    EXPECT_THAT(bounds.asked, ElementsAre(std::pair(1.0, -5.0), std::pair(1.0, 50.0)));
}

// Another thread holds the lock in a telling whose only listener has gone.
TEST(ValServerTest, WithoutListenersNothingIsLocked) {
    ValServer<double> server;
    std::promise<void> inside;
    std::promise<void> changed;
    Heard going(server, kBefore, [&](const Event&) {
        going.guard.reset();
        inside.set_value();
        changed.get_future().wait();
    });
    const auto telling = std::async(std::launch::async, [&] { server.preNotifyValChanged(); });
    inside.get_future().wait();
    server = 1.0;
    changed.set_value();
    telling.wait();
    EXPECT_EQ(server.getValue(), 1.0);
}

TEST(ValServerTest, AServerMayGoWhileItTells) {
    auto server = std::make_unique<ValServer<double>>();
    const Heard first(*server, kChanged, [&](const Event& event) {
        server.reset();
        EXPECT_EQ(event.getValue(), 5.0);
    });
    const Heard second(*server);
    server->updateAndNotify(5.0);
    EXPECT_EQ(first.values.size(), 1u);
    EXPECT_TRUE(second.values.empty());
}

// Writes which of its clients changed, and to what.
class Follower final : public ValObserverClient {
public:
    ValClient<double> time{this};
    ValClient<bool> flag{this};
    std::vector<std::string> log;

protected:
    void notifyValChanged(const ValObserverBase& observer) override {
        if (&observer == &time)
            log.push_back("time " + std::to_string(static_cast<int>(time.getValue())));
        else if (&observer == &flag)
            log.push_back(flag.getValue() ? "on" : "off");
        if (log.size() == 3)
            time.registerWith(nullptr);
    }
    void preNotifyValChanged(const ValObserverBase& observer) override {
        log.push_back(&observer == &time ? "before time" : "before flag");
    }
};

TEST(ValClientTest, PassesChangesOnAndHoldsTheValue) {
    ValServer<double> time(1.0);
    ValServer<bool> flag;
    Follower follower;
    follower.time.registerWith(&time);
    follower.flag.registerWith(&flag, true);
    EXPECT_EQ(follower.time.getValue(), 1.0);
    EXPECT_EQ(time.numClients(), 1u);
    EXPECT_TRUE(follower.log.empty());
    time.preNotifyValChanged(); // not asked for
    time = 2.0;
    flag.preNotifyValChanged();
    flag = true; // the third: the time is let go
    time = 3.0;
    EXPECT_THAT(follower.log, ElementsAre("time 2", "before flag", "on"));
    EXPECT_FALSE(follower.time.isRegistered());
    EXPECT_EQ(follower.time.getValue(), 2.0);
    follower.flag.dropValue();
    EXPECT_FALSE(follower.flag.getValue());
}

TEST(ValClientTest, FollowsOneServerAtATimeWhileItIsThere) {
    auto server = std::make_unique<ValServer<double>>(1.0);
    ValServer<double> other(5.0);
    ValClient<double> client;
    client.registerWith(server.get());
    client.registerWith(&other);
    client.registerWith(&other); // once more, in place of the first
    EXPECT_EQ(other.numClients(), 1u);
    other = 6.0;
    EXPECT_EQ(client.getValue(), 6.0);
    client.registerWith(server.get());
    EXPECT_FALSE(other.hasListeners());
    server.reset();
    EXPECT_FALSE(client.isRegistered());
    EXPECT_EQ(client.getValue(), 1.0);
}

TEST(ValClientTest, MayGoWhileItIsTold) {
    struct Owner final : ValObserverClient {
        std::unique_ptr<ValClient<double>> value = std::make_unique<ValClient<double>>(this);

    protected:
        void notifyValChanged(const ValObserverBase&) override { value.reset(); }
    } owner;
    ValServer<double> server;
    owner.value->registerWith(&server);
    server = 1.0;
    EXPECT_EQ(owner.value, nullptr);
    EXPECT_EQ(server.numClients(), 0u);
}

} // namespace
