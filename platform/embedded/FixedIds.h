// Identifiers and a time of day that are the same in every run.
#pragma once

#include "platform/base/IdSource.h"

#include <atomic>

namespace cutroom {

// Gives 1, 2, 3 ... (spread over the 64 bits, so that their texts differ early) and a fixed time.
// For tests and recorded sessions: two of them give the same ids, so nothing made with one may
// ever meet what another made. Any thread.
class CUTROOM_API FixedIds final : public iIdSource {
public:
    // `seed` starts the sequence, `seconds` is the time of day.
    explicit FixedIds(std::uint64_t seed = 0, std::uint32_t seconds = 1'700'000'000) noexcept
        : last_(seed), seconds_(seconds) {}
    std::uint64_t nextId() override;
    std::uint32_t secondsNow() override;

private:
    std::atomic<std::uint64_t> last_;
    const std::uint32_t seconds_;
};

} // namespace cutroom
