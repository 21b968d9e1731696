#include "platform/embedded/LoopTimers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace cutroom {

namespace {

// A timer is due this many seconds early: less than any clock shows, more than the rounding of
// sums of seconds, which would else put a call off by a whole turn.
constexpr double kSlack = 1e-9;

} // namespace

LoopTimers::Id LoopTimers::add(double now, double delay, double interval, Task task) {
    const double due = now + std::fmax(delay, 0.0); // of NaN and 0 the 0
    const Id id = ++last_;
    timers_.emplace(Key(due, id), Timer{due, std::fmax(interval, 0.0), std::move(task)});
    due_.emplace(id, due);
    return id;
}

LoopTimers::Task LoopTimers::remove(Id id) noexcept {
    const auto due = due_.find(id);
    if (due == due_.end())
        return nullptr;
    const auto timer = timers_.find(Key(due->second, id));
    Task task = std::move(timer->second.task);
    timers_.erase(timer);
    due_.erase(due);
    return task;
}

double LoopTimers::nextDue() const noexcept {
    return timers_.empty() ? std::numeric_limits<double>::infinity() : timers_.begin()->first.first;
}

LoopTimers::Task LoopTimers::takeDue(double now, Id newest) {
    now += kSlack;
    for (auto timer = timers_.begin(); timer != timers_.end() && timer->first.first <= now;
         ++timer) {
        const Key key = timer->first;
        if (key.second > newest)
            continue;
        if (timer->second.interval <= 0.0)
            return remove(key.second);
        Task task = timer->second.task;
        putOn(key, now);
        return task;
    }
    return nullptr;
}

void LoopTimers::putOn(Key key, double now) {
    auto node = timers_.extract(key);
    const Timer& timer = node.mapped();
    double count = std::floor((now - timer.origin) / timer.interval) + 1.0;
    double due = timer.origin + count * timer.interval;
    if (due <= now) // the quotient was rounded down, or the interval is too short to be seen
        due = std::max(timer.origin + (count + 1.0) * timer.interval,
                       std::nextafter(now, std::numeric_limits<double>::infinity()));
    node.key().first = due;
    due_[key.second] = due;
    timers_.insert(std::move(node));
}

} // namespace cutroom
