// The event loop that we ship.
#pragma once

#include "platform/embedded/LoopClock.h"
#include "platform/embedded/LoopQueue.h"
#include "platform/embedded/LoopTimers.h"
#include "platform/host/EventLoop.h"

#include <atomic>
#include <limits>
#include <memory>
#include <thread>

namespace cutroom {

// The user-interface thread is the one that made the loop, or the one that last ran it. What posted
// work, handlers and tasks throw is logged, and the loop goes on. With a manual clock a run jumps
// from one due time to the next and never sleeps, save for posts while no timer and no deadline is
// set.
class CUTROOM_API EmbeddedLoop final : public iEventLoop {
public:
    static constexpr double kForever = std::numeric_limits<double>::infinity();
    // Turns after which `pump` and `drain` give up on a queue that refills itself, with a log line.
    static constexpr int kMostTurns = 1000;

    // `clock` outlives the loop.
    explicit EmbeddedLoop(iLoopClock& clock);
    // Drops what still waits, without running it.
    ~EmbeddedLoop() override;

    bool isUiThread() const noexcept override;
    void post(std::function<void()> work) override;
    void post(const Event& event) override;
    bool postUnlessWaiting(const Event& event) override;
    void removeEventsFor(const EventHandler* handler) noexcept override;
    Kv::Ptr<Guard> addTimer(double delay, double interval, std::function<void()> task) override;
    void drain() noexcept override;

    // Makes the calling thread the user-interface thread. Only while no other thread runs the loop.
    void becomeUiThread() noexcept;

    // The running operations make their thread the user-interface thread. All may be called again
    // from inside what they run.

    // Runs timers that are due and hands over what waits until nothing does; never waits. Gives the
    // number of calls made.
    std::size_t pump();
    // Runs for `seconds` of the clock, or until `quit`.
    void runFor(double seconds);
    // Runs until `condition`, asked after each turn, holds: true. False after `timeout` seconds of
    // the clock, or after `quit`.
    bool runUntil(const std::function<bool()>& condition, double timeout = kForever);
    // Runs until `quit`.
    void run();
    // Ends the innermost run, or the next one when none is under way. Any thread.
    void quit();
    // The number of items in the queue. Any thread.
    std::size_t waiting() const;

    iLoopClock& clock() const noexcept { return clock_; }

private:
    struct State;

    std::size_t turn() noexcept;
    std::size_t fireTimers() noexcept;
    std::size_t handOver() noexcept;
    std::size_t turnsUntilQuiet(bool timers) noexcept;
    void waitForWork(double until);
    bool takeQuit();

    iLoopClock& clock_;
    std::shared_ptr<State> state_; // watched by the guards of timers
    std::atomic<std::thread::id> uiThread_;
};

} // namespace cutroom
