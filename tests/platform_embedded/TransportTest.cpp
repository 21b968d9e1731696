#include "platform/embedded/EmbeddedHost.h"

#include "platform/base/Time.h"
#include "platform/messaging/Notifiable.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace cutroom;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

void tell(const std::string& what, std::vector<std::string>& story) {
    const int status = TransitStatus::manager().getStatus();
    story.push_back(what + " at status " + std::to_string(status));
}

struct Player final : iPlayable {
    Player(std::string label, std::vector<std::string>& written)
        : name(std::move(label)), story(written) {}

    double playTime() const override { return time; }
    void setTimeFromPlayback(double to) override {
        time = to;
        told.push_back(to);
        if (onMoved)
            onMoved();
    }
    TimeRange playExtents() const override { return extents; }
    Kv::FrameRate playRate() const override { return rate; }
    bool isPlaying() const override { return playing; }
    void setPlaying(bool on) override { playing = on; }
    void informPlayStateChange(PlayStateNotifyType change) override {
        const char* const names[] = {"", " started", " stopped", " speed"};
        tell(name + names[change] + (playing ? "*" : ""), story);
        if (onState)
            onState(change);
    }
    AVMachine* getDevice() const override { return nullptr; }

    std::string name;
    std::vector<std::string>& story;
    double time = 0.0;
    TimeRange extents{0.0, 10.0};
    Kv::FrameRate rate{25};
    bool playing = false;
    std::vector<double> told;
    std::function<void()> onMoved;
    std::function<void(PlayStateNotifyType)> onState;
};

class TransportTest : public testing::Test {
protected:
    void SetUp() override {
        Host::playServer().registerPlayable(&a);
        started = listen("playStarted", TransitStatus::playStartedMsgType());
        stopped = listen("playStopped", TransitStatus::playStoppedMsgType());
    }
    void TearDown() override {
        onStopped = nullptr;
        transport.stop();
        for (Player* player : {&a, &b})
            Host::playServer().deregisterPlayable(player);
    }
    Kv::Ptr<Guard> listen(const std::string& what, int type) {
        return transport.notices().registerNotification(
            makeCallback<NotifyMsg>([this, what](const NotifyMsg&) {
                tell(what, story);
                if (what == "playStopped" && onStopped)
                    onStopped();
            }),
            type);
    }
    void runFor(double seconds) { host.loop().runFor(seconds); }

    EmbeddedHost host{EmbeddedHost::repeatable()};
    Transport& transport = host.transport();
    std::vector<std::string> story;
    std::function<void()> onStopped;
    Player a{"a", story};
    Player b{"b", story};
    Kv::Ptr<Guard> started, stopped;
};

} // namespace

TEST_F(TransportTest, StatesAndNoticesComeInOrder) {
    EXPECT_TRUE(transport.play());
    EXPECT_EQ(transport.getStatus(), kTransitInProgress);
    EXPECT_THAT(a.told, IsEmpty());
    runFor(0.1);
    EXPECT_EQ(transport.getStatus(), kTransitSteady);
    EXPECT_EQ(TransitStatus::manager().getCurrentSpeed(), 1.0);
    for (int i = 0; i < 2; ++i) // stopped already: nothing to tell
        transport.stop();
    runFor(1);
    EXPECT_EQ(transport.getStatus(), kTransitIdle);
    EXPECT_EQ(transport.getCurrentSpeed(), 0.0);
    EXPECT_THAT(story, ElementsAre("a started* at status 2", "playStarted at status 2",
                                   "a stopped at status 2", "playStopped at status 0"));
}

TEST_F(TransportTest, TimeMovesWithTheClockInWholeFrames) {
    const Kv::FrameRate ntsc(30000, 1001);
    const struct {
        const char* name;
        double from;
        Kv::FrameRate rate;
        double speed, seconds, to;
        std::size_t moves;
    } rows[] = {
        {"real time", 0, {25}, 1, 2, 2, 50},
        {"between frames", 0, {25}, 1, 0.05, 0.04, 1},
        {"backwards", 5, {25}, -1, 2, 3, 50},
        {"five times", 0, {25}, 5, 1, 5, 25},
        {"slow: only whole frames are told", 0, {25}, 0.25, 1, 0.24, 6},
        {"from off the grid", 0.01, {25}, 1, 1, 1.01, 25},
        {"30000/1001", 0, ntsc, 1, 3003 / 3000.0, 3003 / 3000.0, 30},
        {"30000/1001 backwards", 5, ntsc, -2, 1.001, 5 - 2.002, 30},
        {"no rate", 0, {}, 0.5, 1.02, 0.5, 25},
    };
    for (const auto& row : rows) {
        a.time = row.from;
        a.rate = row.rate;
        a.told.clear();
        ASSERT_TRUE(transport.play(row.speed)) << row.name;
        runFor(row.seconds);
        EXPECT_THAT(a.time, DoubleNear(row.to, 1e-9)) << row.name;
        EXPECT_EQ(a.told.size(), row.moves) << row.name;
        transport.stop();
    }
}

TEST_F(TransportTest, ItStopsAtTheEndThatLiesAhead) {
    const struct {
        const char* name;
        double from, speed, to, after; // seconds until it stops
    } rows[] = {
        {"end", 9, 1, 10, 1},
        {"start", 0.5, -1, 0, 0.52},
        {"past the end in one step", 9.9, 100, 10, 0.04},
        {"already there", 10, 1, 10, 0},
        {"beyond it", 12, 1, 12, 0},
        {"back from beyond", 10.08, -1, 0, 10.08},
        {"nothing to play", kNoTime, 1, kNoTime, 0},
    };
    for (const auto& row : rows) {
        a.time = row.from;
        story.clear();
        const double begin = Host::clock().now();
        double end = -1;
        onStopped = [&] { end = Host::clock().now(); };
        transport.play(row.speed);
        EXPECT_TRUE(host.loop().runUntil([&] { return end >= 0; }, 20)) << row.name;
        EXPECT_THAT(end - begin, DoubleNear(row.after, 1e-9)) << row.name;
        EXPECT_EQ(a.time, row.to) << row.name;
        EXPECT_FALSE(a.playing) << row.name;
        EXPECT_EQ(story.back(), "playStopped at status 0") << row.name;
    }
}

TEST_F(TransportTest, ImpossibleSpeedsAreRefused) {
    for (const double speed : {0.0, std::nan(""), std::numeric_limits<double>::infinity(), -1001.0})
        EXPECT_FALSE(transport.play(speed)) << speed;
    Host::playServer().deregisterPlayable(&a);
    EXPECT_FALSE(transport.play());
    EXPECT_EQ(transport.getStatus(), kTransitIdle);
    EXPECT_THAT(story, IsEmpty());
}

TEST_F(TransportTest, AChangeOfSpeedGoesOnFromWhereItIs) {
    transport.play();
    runFor(1);
    story.clear();
    transport.play(1);
    EXPECT_THAT(story, IsEmpty());
    transport.play(-2);
    EXPECT_THAT(story, ElementsAre("a speed* at status 1"));
    runFor(0.4);
    EXPECT_THAT(a.time, DoubleNear(0.2, 1e-9));
    for (int i = 0; i < 100; ++i) { // a wheel turned faster than frames go by
        transport.play(i % 2 == 0 ? 1.1 : 0.9);
        runFor(0.01);
    }
    EXPECT_THAT(a.time, DoubleNear(1.2, 0.0401));
}

TEST_F(TransportTest, ATimeSetByTheUserIsPlayedOnFrom) {
    transport.play();
    runFor(1);
    a.time = 5.0;
    runFor(1);
    EXPECT_THAT(a.time, DoubleNear(5.98, 0.0401));
}

TEST_F(TransportTest, LocatingStopsShuttlingButNotPlaying) {
    transport.play(1);
    TransitStatus::manager().prepareToLocate();
    EXPECT_EQ(transport.getCurrentSpeed(), 1.0);
    transport.play(-1);
    TransitStatus::manager().prepareToLocate();
    EXPECT_EQ(transport.getStatus(), kTransitIdle);
}

TEST_F(TransportTest, MachinesGetTheirTimeToStart) {
    transport.setPreroll(0.5);
    transport.play();
    runFor(0.4);
    EXPECT_EQ(transport.getStatus(), kTransitInProgress);
    EXPECT_TRUE(a.playing);
    EXPECT_EQ(a.time, 0.0);
    runFor(0.6);
    EXPECT_THAT(a.time, DoubleNear(0.5, 0.0401));
}

TEST_F(TransportTest, AllPlayTogetherAndTheFirstDecidesTheEnd) {
    b.time = 3.0;
    b.extents = TimeRange(0, 3.2);
    Host::playServer().registerPlayable(&b);
    a.extents = TimeRange(0, 1);
    transport.play();
    runFor(2);
    EXPECT_EQ(a.time, 1.0);
    EXPECT_EQ(b.time, 3.2);
    EXPECT_THAT(story, ElementsAre("a started* at status 2", "b started* at status 2",
                                   "playStarted at status 2", "a stopped at status 2",
                                   "b stopped at status 2", "playStopped at status 0"));
    b.told.clear(); // one that follows another is not moved twice
    a.time = 0;
    a.onMoved = [this] { b.time = a.time + 2.0; };
    transport.play();
    runFor(1);
    EXPECT_THAT(b.told, IsEmpty());
    EXPECT_THAT(b.time, DoubleNear(3.0, 1e-9));
}

TEST_F(TransportTest, OneThatJoinsLatePlaysFromThereAndOneThatLeavesIsTold) {
    transport.play();
    runFor(1);
    b.time = 5;
    Host::playServer().registerPlayable(&b);
    Host::playServer().registerPlayable(&b);
    EXPECT_TRUE(b.playing);
    runFor(1);
    EXPECT_THAT(b.time, DoubleNear(6.0, 0.0401));
    story.clear();
    Host::playServer().deregisterPlayable(&a);
    EXPECT_FALSE(Host::playServer().isRegistered(&a));
    EXPECT_THAT(story, ElementsAre("a stopped at status 1"));
    Host::playServer().deregisterPlayable(&b);
    EXPECT_THAT(story, ElementsAre("a stopped at status 1", "b stopped at status 1",
                                   "playStopped at status 0"));
}

TEST_F(TransportTest, PlayersMayStopJoinAndLeaveWhileTheyAreTold) {
    a.onState = [this](PlayStateNotifyType) { Host::playServer().registerPlayable(&b); };
    a.onMoved = [this] { Host::playServer().deregisterPlayable(&b); };
    transport.play();
    EXPECT_THAT(story, ElementsAre("a started* at status 2", "b started* at status 2",
                                   "playStarted at status 2"));
    runFor(0.1);
    EXPECT_THAT(b.told, IsEmpty());
    EXPECT_FALSE(b.playing);
    a.onState = nullptr;
    a.onMoved = [this] { transport.stop(); };
    runFor(1);
    EXPECT_EQ(a.told.size(), 3u);
    EXPECT_EQ(story.back(), "playStopped at status 0");
}

TEST_F(TransportTest, PlayingAnewFromAStopNoticeHolds) {
    a.onState = [this](PlayStateNotifyType change) {
        if (change == kPlayStateStopped && a.time < 2.5)
            transport.play(2);
    };
    transport.play();
    runFor(1);
    transport.stop();
    EXPECT_EQ(transport.getStatus(), kTransitInProgress);
    runFor(1);
    EXPECT_THAT(a.time, DoubleNear(3.0, 1e-9));
    onStopped = [this] {
        onStopped = nullptr;
        transport.play(-1);
    };
    transport.stop();
    runFor(0.5);
    EXPECT_THAT(a.time, DoubleNear(2.52, 1e-9));
}

TEST_F(TransportTest, APlayerThatThrowsDoesNotHoldUpTheOthers) {
    Host::playServer().registerPlayable(&b);
    a.onState = [](PlayStateNotifyType) { throw 1; };
    transport.play();
    runFor(1);
    EXPECT_THAT(b.time, DoubleNear(1.0, 1e-9));
    transport.stop();
    EXPECT_FALSE(b.playing);
    EXPECT_EQ(transport.getStatus(), kTransitIdle);
}
