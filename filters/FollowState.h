// `cutroom::FollowState`: the state of a thing that is worked out from the whole project at the
// first look and follows its changes from then on, while other threads change the project.
#pragma once

#include "bins/ChangeLock.h"
#include "platform/base/Cookie.h"

#include <atomic>

namespace cutroom {

// It is made under no lock; what changes meanwhile is noted, and looked at again when it is done.
// Several threads may make it at once; the first to finish decides.
//
//     if (state.begin()) {                                    // notes changes from now on
//         auto made = ...;                                    // reads the project
//         const ChangeLock lock;
//         CookieVec touched;
//         if (state.end(touched)) { take over `made`; look again at `touched`; }
//     }
class FollowState {
public:
    // True once it has been made.
    bool ready() const noexcept { return ready_.load(std::memory_order_acquire); }
    // Begins to make it; false when that was done. Each true is followed by one `end`.
    bool begin() {
        const ChangeLock lock;
        if (ready())
            return false;
        ++makers_;
        return true;
    }
    // Ends the making, under the change lock. First maker: true, and what changed meanwhile.
    bool end(CookieVec& touched) {
        const bool first = !ready();
        ready_.store(true, std::memory_order_release);
        if (first)
            touched.swap(touched_);
        if (--makers_ == 0)
            touched_.clear();
        return first;
    }
    // Notes that what is being made is out of date, under the change lock. True: the owner must
    // make it anew now.
    bool renews() {
        if (ready())
            return true;
        isOutdated_ = makers_ > 0;
        return false;
    }
    // Tells whether that was noted; for the first maker, after `end`.
    bool isOutdated() const noexcept { return isOutdated_; }
    // Notes changed assets, under the change lock. True: the owner must look at them now.
    bool follows(const CookieVec& assets) {
        if (ready())
            return true;
        if (makers_ > 0)
            touched_.insert(touched_.end(), assets.begin(), assets.end());
        return false;
    }

private:
    std::atomic<bool> ready_{false}; // changed under the change lock
    int makers_ = 0;                 // threads that make at this moment; under the change lock
    CookieVec touched_;              // the same
    bool isOutdated_ = false;        // the same; stays as it is once it has been made
};

} // namespace cutroom
