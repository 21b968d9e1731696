#include "platform/host/Host.h"
#include "platform/base/IdSource.h"
#include "platform/base/Log.h"
#include "platform/host/Clock.h"
#include "platform/host/ConsoleFocus.h"
#include "platform/host/DebugCommands.h"
#include "platform/host/EventLoop.h"
#include "platform/host/FileSystem.h"
#include "platform/host/PlayServer.h"
#include "platform/host/ProcessLife.h"
#include "platform/host/Redraw.h"
#include "platform/host/StringTable.h"
#include "platform/host/TransitStatus.h"
#include "platform/host/UserMessages.h"
#include "tests/support/LogLines.h"

#include <gmock/gmock.h>

#include <list>
#include <string>
#include <vector>

using namespace cutroom;
using cutroom::test::LogLines;
using testing::ElementsAre;

namespace {

// Keeps what is posted until it is drained.
struct HeldLoop final : iEventLoop {
    bool isUiThread() const noexcept override { return true; }
    void post(std::function<void()> work) override { held.push_back(std::move(work)); }
    void post(const Event&) override {}
    bool postUnlessWaiting(const Event&) override { return true; }
    void removeEventsFor(const EventHandler*) noexcept override {}
    Kv::Ptr<Guard> addTimer(double, double, std::function<void()>) override { return {}; }
    void drain() noexcept override {
        for (; !held.empty(); held.pop_front())
            held.front()();
    }

    std::list<std::function<void()>> held;
};

struct OneLine final : iLogSink {
    void write(std::string_view message) override { line = message; }
    std::string line;
};

struct OneId final : iIdSource {
    std::uint64_t nextId() override { return 7; }
    std::uint32_t secondsNow() override { return 8; }
};

struct TwoTexts final : iStringTable {
    std::optional<LightweightString<wchar_t>> find(ResId id) const override {
        if (id == kResCopy)
            return L"Kopie\u00e9";
        return id == kResSubclip ? std::optional<LightweightString<wchar_t>>(L"") : std::nullopt;
    }
};

struct Handler final : ConsoleEventHandler {
    void handleConsoleFocus() override { ++told; }
    int told = 0;
};

// Posts the rest of its work to the loop when it is destroyed.
struct Posting {
    static inline std::vector<std::string> story;
    ~Posting() {
        postToUiThread([] { story.push_back(Host::installed() ? "posted, hosted" : "too late"); });
    }
};

} // namespace

TEST(HostTest, WithoutAHostEveryServiceAnswersHarmlessly) {
    const LogLines log;
    ASSERT_FALSE(Host::installed());

    EXPECT_EQ(TransitStatus::manager().getStatus(), kTransitIdle);
    EXPECT_EQ(TransitStatus::manager().getCurrentSpeed(), 0.0);
    TransitStatus::manager().prepareToLocate();
    EXPECT_NE(TransitStatus::playStartedMsgType(), TransitStatus::playStoppedMsgType());

    Handler handler;
    setConsoleFocus(&handler);
    EXPECT_EQ(getConsoleFocus(), nullptr);
    EXPECT_FALSE(handler.hasConsoleFocus() || handler.told);

    EXPECT_FALSE(addDebugCommand("x", [] {}) || Host::debugCommands().run("x"));
    EXPECT_FALSE(Host::playServer().isRegistered(nullptr));

    int ran = 0;
    Host::loop().post([&] { ++ran; });
    EXPECT_EQ(ran, 1);
    EXPECT_FALSE(Host::loop().addTimer(0, 1, [] {}));
    const double first = Host::clock().now();
    EXPECT_GE(Host::clock().now(), first);
    { Glib::UpdateDeferrer nothing; }

    showUserMessage(L"Gr\u00fc\u00dfe");
    EXPECT_THAT(log.lines, ElementsAre("Gr\u00fc\u00dfe\n"));
}

TEST(HostTest, TextsComeFromTheTableOrShowTheirNumber) {
    EXPECT_EQ(paddedResourceStrW(kResCopy, L" (", L")"), L" (#10019)");
    TwoTexts texts;
    HostServices set;
    set.strings = &texts;
    const ScopedHost host(set);
    EXPECT_EQ(resourceStr(kResCopy), "Kopie\u00e9");
    EXPECT_EQ(paddedResourceStrW(kResCopy, L"(", L")"), L"(Kopie\u00e9)");
    EXPECT_EQ(resourceStrW(kResSubclip), L"");
    EXPECT_EQ(resourceStrW(4711), L"#4711");
}

TEST(HostTest, IdsLogAndLoopReachTheLowerLayersAndLeaveThemAgain) {
    const LogLines outer;
    iIdSource* const system = &idSource();
    OneLine log;
    OneId ids;
    HeldLoop loop;
    HostServices set;
    {
        const ScopedHost host(set);
        LogBoth("set without a log");
    }
    set.log = &log;
    set.ids = &ids;
    set.loop = &loop;
    {
        const ScopedHost host(set);
        LogBoth("inner");
        EXPECT_EQ(log.line, "inner");
        EXPECT_EQ(idSource().secondsNow(), 8u);
        EXPECT_TRUE(uiThread() == &loop && eventQueue() == &loop);
    }
    LogBoth("outer");
    EXPECT_THAT(outer.lines, ElementsAre("set without a log", "outer"));
    EXPECT_TRUE(&idSource() == system && uiThread() == nullptr);
}

TEST(HostTest, WhatIsPostedWhileALifeEndsStillRuns) {
    HeldLoop loop;
    HostServices set;
    set.loop = &loop;
    Posting::story.clear();
    Host::install(set);
    ProcessSingleton<Posting>::get();
    loop.post([] { Posting::story.push_back("waiting"); });
    Host::uninstall();
    EXPECT_THAT(Posting::story, ElementsAre("waiting", "posted, hosted"));
    EXPECT_TRUE(loop.held.empty());
}
