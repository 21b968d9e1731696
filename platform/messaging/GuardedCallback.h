// `cutroom::iGuardedCallback`: a callback that knows how many guards of its registrations are left.
#pragma once

#include "platform/base/Export.h"

#include <atomic>
#include <memory>

namespace cutroom {

// When a guard is dropped inside a telling while another thread tells through the same notifier,
// its registration ends a little later. A callback that makes its calls later, as one that posts
// them does, must not make them any more; the count of guards tells it at once.
class CUTROOM_API iGuardedCallback {
public:
    using GuardCount = std::shared_ptr<std::atomic<int>>;

    virtual ~iGuardedCallback();
    // The number of guards of its registrations that have not been dropped. Never null.
    virtual const GuardCount& guardCount() const noexcept = 0;
};

} // namespace cutroom
