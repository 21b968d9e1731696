// `cutroom::BinIndex`: where a bin's items are, by asset (the first item of it) and by identity.
#pragma once

#include "bins/BinContents.h"
#include "bins/PlaceTable.h"

#include <atomic>
#include <mutex>

namespace cutroom {

// Belongs to one bin. Look-ups come under the bin's lock as a reader, from many threads; everything
// else under it as a writer. The first look-ups after a change that moved items walk the list; when
// more follow, a table is made and kept until items move again. So looking up costs constant time
// in the long run, and removing one item after another makes no table each time.
class BinIndex {
public:
    using Items = BinContents::Items;

    // The place; -1 when absent.
    int find(const Items& items, const Cookie& asset);
    int find(const Items& items, const IdStamp& item);

    // Items have moved or were replaced.
    void drop() noexcept;
    // Items from `first` on were appended.
    void appended(const Items& items, std::size_t first);
    // Appends the item unless one of its asset is there.
    void appendNew(Items& items, BinItem item);

private:
    template <class Key> struct Side {
        PlaceTable<Key> table;
        std::atomic<bool> made{false}; // set after the table
        std::atomic<int> walks{0};     // since the table was dropped
    };
    template <class Key> int findIn(Side<Key>& side, const Items& items, const Key& key);
    template <class Key> void make(Side<Key>& side, const Items& items);

    std::mutex making_; // held by the reader that makes a table
    Side<Cookie> assets_;
    Side<IdStamp> identities_;
};

} // namespace cutroom
