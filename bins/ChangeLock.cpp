#include "bins/ChangeLock.h"

namespace cutroom {

CriticalSection& ChangeLock::section() noexcept {
    static CriticalSection lock(LockRank::change);
    return lock;
}

} // namespace cutroom
