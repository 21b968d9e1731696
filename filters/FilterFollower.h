// `cutroom::FilterFollower`: gathers what changes in the project database, on whichever thread, and
// hands it on under the change lock.
#pragma once

#include "platform/base/Annotations.h"
#include "platform/base/Cookie.h"
#include "platform/base/Guard.h"
#include "platform/base/Locks.h"
#include "platform/messaging/NotifyMsg.h"

#include <atomic>
#include <functional>

namespace cutroom {

// A change is told while the database's notifier is held, and there only the user-interface thread
// may wait for the change lock. So what other threads change waits until that thread comes to it,
// or until a filter is looked at.
class FilterFollower {
public:
    // `apply` is called under the change lock, with assets that came, changed or went; `arrange`
    // has `catchUp` called on the user-interface thread later.
    FilterFollower(std::function<void(const CookieVec&)> apply, std::function<void()> arrange);

    // Hands on what waits; when it returns, all that was told before has been applied, by whichever
    // thread. Any thread that may take the change lock.
    void catchUp();
    // Forgets what waits.
    void reset();

private:
    void hear(const NotifyMsg& message);
    CookieVec take();
    void noteApplied();

    const std::function<void(const CookieVec&)> apply_;
    const std::function<void()> arrange_;
    std::atomic<bool> anyWaiting_{false}; // until it has been applied
    int depth_ = 0;                       // of `apply`; under the change lock
    CriticalSection lock_{LockRank::leaf};
    CookieVec waiting_ CUTROOM_GUARDED_BY(lock_);
    Kv::Ptr<Guard> registration_;
};

} // namespace cutroom
