// The timers of a loop, by the time at which they are due.
#pragma once

#include "platform/base/Export.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace cutroom {

// Has no lock: its owner holds one, and lets it go before it runs or destroys a task.
class CUTROOM_API LoopTimers {
public:
    using Id = std::uint64_t;
    using Task = std::shared_ptr<const std::function<void()>>;

    // Due first at `now + delay`, then, with `interval` above 0, every `interval` seconds.
    Id add(double now, double delay, double interval, Task task);
    // Gives the task of a timer that is taken out; null for one that is gone.
    Task remove(Id id) noexcept;
    // When the next one is due; infinity without any.
    double nextDue() const noexcept;
    // The task of the timer longest due at `now` (to the nanosecond), of those not newer than
    // `newest`; null when there is none. It is put on to its next due time after `now` (missed ones
    // are left out), or taken out when it has none.
    Task takeDue(double now, Id newest);
    // The number of the newest timer.
    Id newest() const noexcept { return last_; }

private:
    struct Timer {
        double origin = 0.0; // when first due; later ones are counted from here, so nothing adds up
        double interval = 0.0;
        Task task;
    };
    using Key = std::pair<double, Id>; // due, number

    void putOn(Key key, double now);

    std::map<Key, Timer> timers_;
    std::map<Id, double> due_;
    Id last_ = 0;
};

} // namespace cutroom
