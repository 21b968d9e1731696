// The columns of a bin's table, its order, and the assets behind its items.
#include "bins/BinData.h"
#include "bins/BinIndex.h"
#include "bins/BinValues.h"
#include "bins/DocumentManager.h"

#include <algorithm>
#include <numeric>
#include <utility>

LightweightString<wchar_t> BinData::getAttribute(unsigned index,
                                                 const LogAttribute& attribute) const {
    return cutroom::toWide(cutroom::valueOf(getItem(index), attribute));
}

void BinData::sort(const LogAttribute& attribute, bool ascending) {
    const Change change(*this);
    Items& all = contents_.items;
    std::vector<cutroom::SortKey> keys;
    keys.reserve(all.size());
    for (std::size_t i = 0; i < all.size(); ++i)
        keys.emplace_back(attribute, getAttribute(static_cast<unsigned>(i), attribute));
    std::vector<std::size_t> order(all.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return ascending ? keys[a] < keys[b] : keys[b] < keys[a];
    });
    Items sorted;
    sorted.reserve(all.size());
    for (const std::size_t from : order)
        sorted.push_back(std::move(all[from]));
    all.swap(sorted);
    index_->drop();
    addModifications(kModItemsOrdered);
}

EditPtr BinData::openEdit(unsigned index) const {
    const Cookie asset = getItem(index).asset;
    return asset.type() == 'E' ? EditPtr(asset) : EditPtr();
}

Kv::Ptr<Document> BinData::openDocument(unsigned index) const {
    const Cookie asset = getItem(index).asset;
    return asset.type() == 'D' || asset.type() == 'A'
               ? DocumentManager::instance().getDocument(asset)
               : nullptr;
}
