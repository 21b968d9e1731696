#include "platform/embedded/FixedIds.h"

namespace cutroom {

// Since the factor is odd, different counts give different ids.
std::uint64_t FixedIds::nextId() {
    return (last_.fetch_add(1, std::memory_order_relaxed) + 1) * 0x9E3779B97F4A7C15ull;
}

std::uint32_t FixedIds::secondsNow() { return seconds_; }

} // namespace cutroom
