// The least work of recording a change in an open batch: setting bits under an uncontended
// recursive mutex; with a track each, also noting the track.
#pragma once

#include <cstdint>
#include <list>
#include <mutex>
#include <utility>

namespace cutroom::bench {

class PlainBatch {
public:
    void add(std::uint32_t kinds) {
        const std::lock_guard lock(mutex_);
        kinds_ |= kinds;
    }

    void add(std::uint32_t kinds, std::uint64_t track) {
        const std::lock_guard lock(mutex_);
        kinds_ |= kinds;
        tracks_.push_back(track);
    }

    // Ends the batch: what was collected is given out and forgotten.
    std::uint32_t close() {
        const std::lock_guard lock(mutex_);
        tracks_.clear();
        return std::exchange(kinds_, 0);
    }

private:
    std::recursive_mutex mutex_;
    std::uint32_t kinds_ = 0;
    std::list<std::uint64_t> tracks_;
};

} // namespace cutroom::bench
