// `DetailTable`: the texts of segments, each kept once.
#pragma once

#include "platform/base/Locks.h"
#include "platform/base/Object.h"
#include "platform/store/EventDetail.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace cutroom {

// Only ever grows, so every copy of a channel can share it, on any thread, and a number once given
// means the same text for ever. Numbers count from 1; 0 is the empty detail.
class DetailTable final : public Kv::InternalRefCount {
public:
    DetailTable() = default;
    ~DetailTable() override;

    // The number of `detail`, entered at the first asking. 0 for an empty one.
    std::uint32_t intern(const EventDetail& detail);
    // The detail of a number; empty for 0 and for numbers never given. No lock.
    const EventDetail& get(std::uint32_t number) const noexcept;
    std::uint32_t size() const noexcept { return size_.load(std::memory_order_acquire); }
    // Bytes kept alive.
    std::size_t bytes() const noexcept;

private:
    // Chunk k holds kFirstChunk << k entries and never moves. Most tables hold one or two.
    static constexpr std::uint32_t kFirstChunk = 1;
    static constexpr std::size_t kChunks = 31;

    CriticalSection lock_{LockRank::leaf}; // guards changes
    std::array<std::atomic<EventDetail*>, kChunks> chunks_{};
    std::atomic<std::uint32_t> size_{0};
    std::unordered_multimap<std::size_t, std::uint32_t> byHash_ CUTROOM_GUARDED_BY(lock_);
};

} // namespace cutroom
