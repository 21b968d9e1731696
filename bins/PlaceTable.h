// `cutroom::PlaceTable`: places in a list by what stands there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace cutroom {

// An open-addressed table of places (8 bytes each, at most half of them used); the keys stay in the
// list, which `keyAt` reads. One writer, or many readers.
template <class Key> class PlaceTable {
public:
    static constexpr int kNone = -1;

    // The place of an equal key; kNone without one.
    template <class KeyAt> int find(const Key& key, const KeyAt& keyAt) const {
        if (cells_.empty())
            return kNone;
        const std::uint64_t hash = hashOf(key);
        for (std::size_t at = hash & mask();; at = (at + 1) & mask()) {
            const Cell& cell = cells_[at];
            if (cell.next == 0)
                return kNone;
            if (cell.tag == tagOf(hash) && keyAt(cell.next - 1) == key)
                return static_cast<int>(cell.next - 1);
        }
    }
    // Enters `place`, unless an equal key has one: then gives that, else kNone.
    template <class KeyAt> int insert(const Key& key, std::size_t place, const KeyAt& keyAt) {
        if ((used_ + 1) * 2 > cells_.size())
            grow(used_ + 1, keyAt);
        const std::uint64_t hash = hashOf(key);
        for (std::size_t at = hash & mask();; at = (at + 1) & mask()) {
            Cell& cell = cells_[at];
            if (cell.next == 0) {
                cell = {tagOf(hash), static_cast<std::uint32_t>(place + 1)};
                ++used_;
                return kNone;
            }
            if (cell.tag == tagOf(hash) && keyAt(cell.next - 1) == key)
                return static_cast<int>(cell.next - 1);
        }
    }
    bool empty() const noexcept { return used_ == 0; }
    // Room for `count` keys in all.
    template <class KeyAt> void reserve(std::size_t count, const KeyAt& keyAt) {
        if (count * 2 > cells_.size())
            grow(count, keyAt);
    }
    // Brings the cell of a key near, for a look at it soon to come.
    void prefetch(const Key& key) const noexcept {
        if (!cells_.empty())
            __builtin_prefetch(&cells_[hashOf(key) & mask()], 1);
    }
    void clear() noexcept {
        cells_.clear();
        used_ = 0;
    }

private:
    struct Cell {
        std::uint32_t tag = 0;  // of the hash
        std::uint32_t next = 0; // the place and 1; 0: free
    };
    static std::uint64_t hashOf(const Key& key) noexcept {
        return std::hash<Key>()(key) * std::uint64_t{0x9E3779B97F4A7C15};
    }
    static std::uint32_t tagOf(std::uint64_t hash) noexcept {
        return static_cast<std::uint32_t>(hash >> 32);
    }
    std::size_t mask() const noexcept { return cells_.size() - 1; }

    template <class KeyAt> void grow(std::size_t count, const KeyAt& keyAt) {
        std::size_t size = 16;
        while (size < count * 2)
            size *= 2;
        std::vector<Cell> old(size);
        old.swap(cells_);
        for (const Cell& cell : old) {
            if (cell.next == 0)
                continue;
            std::size_t at = hashOf(keyAt(cell.next - 1)) & mask();
            while (cells_[at].next != 0)
                at = (at + 1) & mask();
            cells_[at] = cell;
        }
    }

    std::vector<Cell> cells_; // none, or a power of two
    std::size_t used_ = 0;
};

} // namespace cutroom
