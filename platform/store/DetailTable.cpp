#include "platform/store/DetailTable.h"

#include <bit>
#include <functional>

namespace cutroom {

namespace {

void mix(std::size_t& hash, std::size_t value) {
    hash ^= value + 0x9E3779B97F4A7C15ull + (hash << 6) + (hash >> 2);
}

std::size_t hashOf(const EventDetail& detail) {
    const std::hash<std::wstring> wide;
    std::size_t hash = wide(detail.name);
    mix(hash, wide(detail.media));
    mix(hash, std::hash<std::string>()(detail.metadata));
    for (const auto& line : detail.lines)
        mix(hash, wide(line));
    return hash;
}

// Chunk and place in it of entry `index` (from 0), when the first chunk holds `first`.
std::pair<std::size_t, std::uint32_t> placeOf(std::uint32_t index, std::uint32_t first) {
    const std::uint32_t shifted = index / first + 1;
    const auto chunk = static_cast<std::size_t>(std::bit_width(shifted) - 1);
    return {chunk, index - first * ((1u << chunk) - 1)};
}

} // namespace

DetailTable::~DetailTable() {
    for (auto& chunk : chunks_)
        delete[] chunk.load(std::memory_order_relaxed);
}

std::uint32_t DetailTable::intern(const EventDetail& detail) {
    if (detail.empty())
        return 0;
    const std::size_t hash = hashOf(detail);
    CriticalSection::Lock lock(lock_);
    const auto [begin, end] = byHash_.equal_range(hash);
    for (auto entry = begin; entry != end; ++entry)
        if (get(entry->second) == detail)
            return entry->second;
    const std::uint32_t index = size_.load(std::memory_order_relaxed);
    const auto [chunk, place] = placeOf(index, kFirstChunk);
    if (!chunks_[chunk].load(std::memory_order_relaxed))
        chunks_[chunk].store(new EventDetail[std::size_t{kFirstChunk} << chunk],
                             std::memory_order_release);
    chunks_[chunk].load(std::memory_order_relaxed)[place] = detail;
    byHash_.emplace(hash, index + 1);
    size_.store(index + 1, std::memory_order_release);
    return index + 1;
}

const EventDetail& DetailTable::get(std::uint32_t number) const noexcept {
    static const EventDetail none;
    if (number == 0 || number > size_.load(std::memory_order_acquire))
        return none;
    const auto [chunk, place] = placeOf(number - 1, kFirstChunk);
    return chunks_[chunk].load(std::memory_order_acquire)[place];
}

std::size_t DetailTable::bytes() const noexcept {
    std::size_t total = sizeof(*this);
    const std::uint32_t count = size();
    for (std::uint32_t number = 1; number <= count; ++number) {
        const EventDetail& detail = get(number);
        total += sizeof(detail) + 48 + detail.metadata.capacity() +
                 (detail.name.capacity() + detail.media.capacity()) * sizeof(wchar_t);
        for (const auto& line : detail.lines)
            total += sizeof(line) + line.capacity() * sizeof(wchar_t);
    }
    return total;
}

} // namespace cutroom
