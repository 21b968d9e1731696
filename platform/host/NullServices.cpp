#include "platform/host/NullServices.h"

#include "platform/base/Log.h"
#include "platform/host/Clock.h"
#include "platform/host/ConsoleFocus.h"
#include "platform/host/DebugCommands.h"
#include "platform/host/EventLoop.h"
#include "platform/host/PlayServer.h"
#include "platform/host/Redraw.h"
#include "platform/host/StringTable.h"
#include "platform/host/TransitStatus.h"
#include "platform/host/UserMessages.h"

#include <chrono>

namespace cutroom {

namespace {

// Without a loop every thread is the user-interface thread: work runs at once, events have nowhere
// to wait, and no time passes that a timer could see.
class NullLoop final : public iEventLoop {
public:
    bool isUiThread() const noexcept override { return true; }
    void post(std::function<void()> work) override { work(); }
    void post(const Event&) override {}
    bool postUnlessWaiting(const Event&) override { return false; }
    void removeEventsFor(const EventHandler*) noexcept override {}
    Kv::Ptr<Guard> addTimer(double, double, std::function<void()>) override { return {}; }
    void drain() noexcept override {}
};

class SteadyClock final : public iClock {
public:
    double now() const override {
        using namespace std::chrono;
        return duration<double>(steady_clock::now().time_since_epoch()).count();
    }
};

class NullTransit final : public iTransitStatusManager {
public:
    eTransitStatus getStatus() const override { return kTransitIdle; }
    double getCurrentSpeed() const override { return 0.0; }
    void prepareToLocate() override {}
    const Notifier& notices() const noexcept override { return notices_; }

private:
    Notifier notices_;
};

class NullPlayServer final : public iPlayServer {
public:
    void registerPlayable(iPlayable*) override {}
    void deregisterPlayable(iPlayable*) override {}
    bool isRegistered(const iPlayable*) const override { return false; }
};

class NullFocus final : public iConsoleFocus {
public:
    ConsoleEventHandler* get() const noexcept override { return nullptr; }
    void set(ConsoleEventHandler*) override {}
    void forget(const ConsoleEventHandler*) noexcept override {}
};

class LoggedMessages final : public iUserMessages {
public:
    void show(const LightweightString<wchar_t>& text, int) override {
        LogBoth("%s\n", toUtf8(text).c_str());
    }
};

class NullStrings final : public iStringTable {
public:
    std::optional<LightweightString<wchar_t>> find(ResId) const override { return std::nullopt; }
};

class NullDebugCommands final : public iDebugCommands {
public:
    Kv::Ptr<Guard> add(const LightweightString<char>&, std::function<void()>) override {
        return {};
    }
    bool run(const LightweightString<char>&) override { return false; }
    LightweightVector<LightweightString<char>> names() const override { return {}; }
};

class NullRedraw final : public iRedraw {
public:
    void defer() override {}
    void resume() noexcept override {}
};

struct NullHost {
    NullLoop loop;
    SteadyClock clock;
    NullTransit transit;
    NullPlayServer playServer;
    NullFocus focus;
    LoggedMessages messages;
    NullStrings strings;
    NullDebugCommands debugCommands;
    NullRedraw redraw;
    HostServices set;

    NullHost() {
        set.loop = &loop;
        set.clock = &clock;
        set.transit = &transit;
        set.playServer = &playServer;
        set.focus = &focus;
        set.messages = &messages;
        set.strings = &strings;
        set.debugCommands = &debugCommands;
        set.redraw = &redraw;
    }
};

} // namespace

// Never destroyed: static objects of the program may still ask while it exits.
const HostServices& nullServices() noexcept {
    static const NullHost* const host = new NullHost;
    return host->set;
}

} // namespace cutroom
