// The change lock: one for all containers of the process.
//
// A thread that changes a container, or tells of a change, takes it first, then the container's own
// lock, then those of the notifiers, last that of a manager's maps. So there is one change at a
// time, two changes never wait for each other, and a listener may read any container.
#pragma once

#include "platform/base/Locks.h"

namespace cutroom {

// Holds the change lock for its own lifetime; may be nested. Not to be taken while any container's
// lock is held without it (asserted).
class CUTROOM_API ChangeLock {
public:
    ChangeLock() : lock_(section()) {}

    static CriticalSection& section() noexcept;

private:
    const CriticalSection::Lock lock_;
};

} // namespace cutroom
