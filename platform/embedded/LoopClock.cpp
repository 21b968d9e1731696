#include "platform/embedded/LoopClock.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <cmath>

namespace cutroom {

namespace {

// The longest single wait; longer ones are made of several. Keeps any finite or infinite due time
// within the range of the system's clock.
constexpr double kLongestWait = 3600.0;

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

iLoopClock::~iLoopClock() = default;

SystemClock::SystemClock() : origin_(steadySeconds()) {}

double SystemClock::now() const { return steadySeconds() - origin_; }

void SystemClock::wait(double due, std::condition_variable_any& changed, CriticalSection& lock) {
    const double seconds = std::min(due - now(), kLongestWait);
    if (seconds > 0.0)
        changed.wait_for(lock, std::chrono::duration<double>(seconds));
}

double ManualClock::now() const { return now_.load(std::memory_order_acquire); }

void ManualClock::advance(double seconds) {
    assert(seconds >= 0.0);
    now_.store(now() + seconds, std::memory_order_release);
}

void ManualClock::wait(double due, std::condition_variable_any& changed, CriticalSection& lock) {
    if (std::isinf(due))
        changed.wait(lock);
    else
        now_.store(std::max(now(), due), std::memory_order_release);
}

} // namespace cutroom
