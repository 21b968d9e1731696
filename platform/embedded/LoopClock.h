// The clocks of the event loop: the computer's own, and one that only a test moves.
#pragma once

#include "platform/base/Locks.h"
#include "platform/host/Clock.h"

#include <condition_variable>

namespace cutroom {

// A clock that knows how to pass the time until something is due.
class CUTROOM_API iLoopClock : public iClock {
public:
    ~iLoopClock() override;
    // Called by the loop with `lock` held once. Returns with it held when `due` (seconds of this
    // clock, or infinity) has come, when `changed` was notified, or earlier.
    virtual void wait(double due, std::condition_variable_any& changed, CriticalSection& lock) = 0;
};

// Real time since the clock was made. Any thread.
class CUTROOM_API SystemClock final : public iLoopClock {
public:
    SystemClock();
    double now() const override;
    void wait(double due, std::condition_variable_any& changed, CriticalSection& lock) override;

private:
    const double origin_;
};

// Time that moves only when told to: by `advance`, or by a running loop, which jumps to whatever
// is due next instead of waiting for it. Starts at 0. Any thread may read; one at a time moves it.
class CUTROOM_API ManualClock final : public iLoopClock {
public:
    double now() const override;
    // Moves on by `seconds`; negative ones and NaN are a programming error (asserted).
    void advance(double seconds);
    void wait(double due, std::condition_variable_any& changed, CriticalSection& lock) override;

private:
    std::atomic<double> now_{0.0};
};

} // namespace cutroom
