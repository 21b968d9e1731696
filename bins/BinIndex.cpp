#include "bins/BinIndex.h"

#include <utility>

namespace cutroom {

namespace {

// Walks of the list that are cheaper than a table, and a list that needs none.
constexpr int kWalksBeforeTable = 8;
constexpr std::size_t kShortList = 16;

const Cookie& keyOf(const BinItem& item, const Cookie*) { return item.asset; }
const IdStamp& keyOf(const BinItem& item, const IdStamp*) { return item.getID(); }

// Reads the key at a place.
template <class Key> auto reader(const BinIndex::Items& items) {
    return [&items](std::size_t place) -> const Key& {
        return keyOf(items[place], static_cast<const Key*>(nullptr));
    };
}

} // namespace

int BinIndex::find(const Items& items, const Cookie& asset) {
    return findIn(assets_, items, asset);
}

int BinIndex::find(const Items& items, const IdStamp& item) {
    return findIn(identities_, items, item);
}

template <class Key> int BinIndex::findIn(Side<Key>& side, const Items& items, const Key& key) {
    if (!side.made.load(std::memory_order_acquire)) {
        const bool walk = items.size() <= kShortList ||
                          side.walks.fetch_add(1, std::memory_order_relaxed) < kWalksBeforeTable;
        if (walk) {
            const auto keyAt = reader<Key>(items);
            for (std::size_t i = 0; i < items.size(); ++i)
                if (keyAt(i) == key)
                    return static_cast<int>(i);
            return -1;
        }
        make(side, items);
    }
    return side.table.find(key, reader<Key>(items));
}

template <class Key> void BinIndex::make(Side<Key>& side, const Items& items) {
    const std::scoped_lock lock(making_);
    if (side.made.load(std::memory_order_relaxed))
        return;
    const auto keyAt = reader<Key>(items);
    side.table.clear();
    side.table.reserve(items.size(), keyAt);
    for (std::size_t i = 0; i < items.size(); ++i)
        side.table.insert(keyAt(i), i, keyAt); // of equal ones the first stays
    side.made.store(true, std::memory_order_release);
}

void BinIndex::drop() noexcept {
    assets_.made = false;
    assets_.walks = 0;
    identities_.made = false;
    identities_.walks = 0;
}

void BinIndex::appended(const Items& items, std::size_t first) {
    const auto enter = [&]<class Key>(Side<Key>& side) {
        if (!side.made)
            return;
        const auto keyAt = reader<Key>(items);
        for (std::size_t i = first; i < items.size(); ++i)
            side.table.insert(keyAt(i), i, keyAt);
    };
    enter(assets_);
    enter(identities_);
}

void BinIndex::appendNew(Items& items, BinItem item) {
    make(assets_, items);
    if (assets_.table.insert(item.asset, items.size(), reader<Cookie>(items)) >= 0)
        return;
    items.push_back(std::move(item));
    if (identities_.made)
        identities_.table.insert(items.back().getID(), items.size() - 1, reader<IdStamp>(items));
}

} // namespace cutroom
