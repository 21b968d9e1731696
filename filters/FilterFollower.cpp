#include "filters/FilterFollower.h"

#include "bins/ChangeLock.h"
#include "platform/messaging/UiThread.h"
#include "platform/project/ProjDb.h"

#include <utility>

namespace cutroom {

FilterFollower::FilterFollower(std::function<void(const CookieVec&)> apply,
                               std::function<void()> arrange)
    : apply_(std::move(apply)), arrange_(std::move(arrange)),
      registration_(projdb::addListener(
          makeCallback<NotifyMsg>([this](const NotifyMsg& message) { hear(message); }))) {}

void FilterFollower::hear(const NotifyMsg& message) {
    const auto* changes = message.getObjectAs<projdb::Changes>();
    if (!changes)
        return;
    bool first = false;
    {
        const CriticalSection::Lock lock(lock_);
        first = waiting_.empty();
        for (const CookieVec* assets : {&changes->removed, &changes->added, &changes->modified})
            waiting_.insert(waiting_.end(), assets->begin(), assets->end());
        anyWaiting_ = true;
    }
    if (isUiThread())
        catchUp();
    else if (first)
        arrange_();
}

CookieVec FilterFollower::take() {
    CookieVec assets;
    const CriticalSection::Lock lock(lock_);
    assets.swap(waiting_);
    return assets;
}

void FilterFollower::noteApplied() {
    const CriticalSection::Lock lock(lock_);
    anyWaiting_ = !waiting_.empty();
}

// `apply` may look at filters and so come here again. What such an inner call takes is applied by
// the outermost one.
void FilterFollower::catchUp() {
    if (!anyWaiting_)
        return;
    const ChangeLock oneAtATime;
    ++depth_;
    if (const CookieVec assets = take(); !assets.empty())
        apply_(assets);
    if (--depth_ == 0)
        noteApplied();
}

void FilterFollower::reset() {
    const ChangeLock oneAtATime;
    (void)take();
    if (depth_ == 0)
        noteApplied();
}

} // namespace cutroom
