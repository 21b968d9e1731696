// The items of a bin: looking at them, putting in and taking out.
#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinBatch.h"
#include "bins/BinData.h"
#include "bins/BinHandle.h"
#include "bins/BinIndex.h"
#include "bins/BinManager.h"
#include "platform/project/ProjDb.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

using cutroom::BinBatch;

namespace {

bool isType(const BinItem& item, CookieType type) {
    return type == BinData::kAnyType || item.getType() == type;
}

// Of the edits in `assets`, those that can be expected to open: they have a record, or are in
// memory.
CookieVec knownEdits(const CookieVec& assets) {
    CookieVec edits;
    for (const Cookie& asset : assets)
        if (asset.type() == 'E')
            edits.push_back(asset);
    const std::vector<bool> present = projdb::arePresent(edits);
    CookieVec known;
    for (std::size_t i = 0; i < edits.size(); ++i)
        if (present[i] || EditManager::instance().isOpen(edits[i]))
            known.push_back(edits[i]);
    return known;
}

// An item for each asset, of an edit that opens with its time and marks. Each edit is let go before
// the next is opened.
BinData::Items itemsOf(const CookieVec& assets) {
    const CookieVec edits = knownEdits(assets);
    auto next = edits.begin();
    BinData::Items items;
    items.reserve(assets.size());
    for (const Cookie& asset : assets) {
        const bool known = next != edits.end() && *next == asset;
        if (known)
            ++next;
        if (const EditPtr edit = known ? EditPtr(asset) : EditPtr())
            items.emplace_back(edit);
        else
            items.emplace_back(asset, 0.0);
    }
    return items;
}

} // namespace

// --- looking -------------------------------------------------------------------------------------

// The owner may do as he likes with the list, so nothing is known of it afterwards.
BinData::Items& BinData::items() {
    const Change change(*this);
    index_->drop();
    return contents_.items;
}

const BinData::Items& BinData::items() const {
    const SharedLock::Read lock(lock_);
    return contents_.items;
}

BinData::Items::iterator BinData::begin() { return items().begin(); }
BinData::Items::iterator BinData::end() {
    const SharedLock::Read lock(lock_);
    return contents_.items.end();
}
BinData::Items::const_iterator BinData::begin() const { return items().begin(); }
BinData::Items::const_iterator BinData::end() const { return items().end(); }

template <class Test> unsigned BinData::count(const Test& test) const {
    const SharedLock::Read lock(lock_);
    return static_cast<unsigned>(
        std::count_if(contents_.items.begin(), contents_.items.end(), test));
}

unsigned BinData::numItems(CookieType type) const {
    if (type == kAnyType) {
        const SharedLock::Read lock(lock_);
        return static_cast<unsigned>(contents_.items.size());
    }
    return count([&](const BinItem& item) { return isType(item, type); });
}

bool BinData::anyItems(CookieType type) const {
    const SharedLock::Read lock(lock_);
    return std::any_of(contents_.items.begin(), contents_.items.end(),
                       [&](const BinItem& item) { return isType(item, type); });
}

// The letter itself: here the invalid type is one of its own.
bool BinData::containsType(CookieType type) const {
    return count([&](const BinItem& item) { return item.getType() == type; }) > 0;
}

bool BinData::empty() const {
    const SharedLock::Read lock(lock_);
    return contents_.items.empty();
}

BinItem BinData::getItem(unsigned index) const {
    const SharedLock::Read lock(lock_);
    return index < contents_.items.size() ? contents_.items[index] : BinItem();
}

template <class Key> int BinData::indexOf(const Key& key) const {
    return index_->find(contents_.items, key);
}

int BinData::findIndex(const Cookie& asset) const {
    const SharedLock::Read lock(lock_);
    return indexOf(asset);
}

int BinData::findIndex(const IdStamp& item) const {
    const SharedLock::Read lock(lock_);
    return indexOf(item);
}

BinData::Items::iterator BinData::find(const Cookie& asset) {
    const SharedLock::Read lock(lock_);
    const int at = indexOf(asset);
    return at < 0 ? contents_.items.end() : contents_.items.begin() + at;
}

BinData::Items::iterator BinData::find(const IdStamp& item) {
    const SharedLock::Read lock(lock_);
    const int at = indexOf(item);
    return at < 0 ? contents_.items.end() : contents_.items.begin() + at;
}

BinData::Items::const_iterator BinData::find(const Cookie& asset) const {
    return const_cast<BinData*>(this)->find(asset);
}

BinData::Items::const_iterator BinData::find(const IdStamp& item) const {
    return const_cast<BinData*>(this)->find(item);
}

template <class Key> BinItem BinData::itemOf(const Key& key) const {
    const SharedLock::Read lock(lock_);
    const int at = indexOf(key);
    return at < 0 ? BinItem() : contents_.items[static_cast<std::size_t>(at)];
}

BinItem BinData::findItem(const Cookie& asset) const { return itemOf(asset); }
BinItem BinData::findItem(const IdStamp& item) const { return itemOf(item); }

bool BinData::contains(const Cookie& asset, bool nested) const {
    if (findIndex(asset) >= 0)
        return true;
    std::set<Cookie> visited;
    return nested && holdsNested(asset, visited);
}

bool BinData::contains(const CookieVec& assets, bool nested) const {
    {
        const SharedLock::Read lock(lock_);
        if (std::all_of(assets.begin(), assets.end(),
                        [this](const Cookie& asset)
                            CUTROOM_NO_THREAD_SAFETY { return indexOf(asset) >= 0; }))
            return true;
    }
    return nested && std::all_of(assets.begin(), assets.end(),
                                 [this](const Cookie& asset) { return contains(asset, true); });
}

// The bins within are asked one by one, without this bin's lock.
bool BinData::holdsNested(const Cookie& asset, std::set<Cookie>& visited) const {
    if (!visited.insert(getID()).second)
        return false;
    CookieVec bins;
    {
        const SharedLock::Read lock(lock_);
        if (indexOf(asset) >= 0)
            return true;
        for (const BinItem& item : contents_.items)
            if (item.getType() == 'G' || item.getType() == 'M')
                bins.push_back(item.asset);
    }
    return std::any_of(bins.begin(), bins.end(), [&](const Cookie& bin) {
        const Kv::Ptr<BinData> within = BinManager::instance().getData(bin);
        return within && within->holdsNested(asset, visited);
    });
}

bool BinData::isComplete() const { return true; }

BinData::Items BinData::copyOfItems() const {
    const SharedLock::Read lock(lock_);
    return contents_.items;
}

LightweightVector<AssetReference> BinData::getCookies() const {
    const SharedLock::Read lock(lock_);
    LightweightVector<AssetReference> references;
    references.reserve(contents_.items.size());
    for (const BinItem& item : contents_.items) {
        references.emplace_back(item.asset);
        if (item.markIn != kNoTime && item.markOut != kNoTime)
            references.back().range = {item.markIn, item.markOut};
    }
    return references;
}

// --- adding --------------------------------------------------------------------------------------

void BinData::append(Items items) {
    Items& all = contents_.items;
    const std::size_t first = all.size();
    all.insert(all.end(), std::make_move_iterator(items.begin()),
               std::make_move_iterator(items.end()));
    index_->appended(all, first);
}

void BinData::add(const BinItem& item) {
    const Change change(*this);
    contents_.items.push_back(item);
    index_->appended(contents_.items, contents_.items.size() - 1);
    addModifications(kModItemsAdded);
}

void BinData::add(const Cookie& asset) { add(BinItem(asset, 0.0)); }

void BinData::add(const CookieVec& assets) {
    if (!assets.empty())
        appendMissing(itemsOf(missing(assets)));
}

CookieVec BinData::missing(const CookieVec& assets) const {
    const SharedLock::Read lock(lock_);
    CookieVec absent;
    absent.reserve(assets.size());
    for (const Cookie& asset : assets)
        if (indexOf(asset) < 0)
            absent.push_back(asset);
    return absent;
}

bool BinData::appendMissing(Items items) {
    const Change change(*this);
    const BinBatch batch(*this);
    resetSelections();
    Items& all = contents_.items;
    const std::size_t before = all.size();
    if (all.capacity() < before + items.size())
        all.reserve(std::max(before + items.size(), before * 2));
    for (BinItem& item : items)
        index_->appendNew(all, std::move(item));
    if (all.size() == before)
        return false;
    addModifications(kModItemsAdded);
    return true;
}

void BinData::add(const BinData& other) {
    Items fresh = other.copyOfItems();
    std::unordered_set<Cookie> assets;
    for (const BinItem& item : fresh)
        assets.insert(item.asset);
    const Change change(*this);
    const BinBatch batch(*this);
    resetSelections();
    CookieVec displaced = takeOut([&](const BinItem& item) { return assets.count(item.asset); });
    if (!displaced.empty()) {
        Modification removal(kModItemsRemoved, Cookie());
        removal.add(displaced);
        addModification(removal);
    }
    if (fresh.empty())
        return;
    append(std::move(fresh));
    addModifications(kModItemsAdded);
}

bool BinData::add(const LightweightVector<AssetReference>& assets) {
    CookieVec accepted;
    std::unordered_map<Cookie, TimeRange> ranges; // the first of each asset
    for (const AssetReference& asset : assets) {
        if (!canAccomodate(asset.cookie))
            continue;
        accepted.push_back(asset.cookie);
        ranges.try_emplace(asset.cookie, asset.range);
    }
    Items items = itemsOf(missing(accepted));
    for (BinItem& item : items) {
        const TimeRange& range = ranges.at(item.asset);
        if (range == AssetReference::invalidRange())
            continue;
        item.markIn = range.getStart();
        item.markOut = range.getEnd();
    }
    return !accepted.empty() && appendMissing(std::move(items));
}

bool BinData::insertBefore(const Cookie& before, const BinItem& item) {
    const Change change(*this);
    const int at = indexOf(before);
    if (at < 0)
        return false;
    contents_.items.insert(contents_.items.begin() + at, item);
    index_->drop();
    addModifications(kModItemsAdded);
    return true;
}

void BinData::replaceItems(Items items) {
    const Change change(*this);
    contents_.items = std::move(items);
    index_->drop();
    addModifications(kModItemsAdded | kModItemsRemoved);
}

void BinData::setContents(Items items) { replaceItems(std::move(items)); }
void BinData::setLogs(Items items) { replaceItems(std::move(items)); }

bool BinData::import(const Cookie& container) {
    if (container == getID())
        return false;
    const Kv::Ptr<BinData> from = BinHandle(container).getBin();
    if (!from) {
        const auto group = AssetAssociationGroupManager::instance().getGroup(container);
        const std::vector<Cookie> members = group ? group->getConstituents() : CookieVec();
        return add(LightweightVector<AssetReference>(members.begin(), members.end()));
    }
    Items items = from->copyOfItems();
    std::erase_if(items, [&](const BinItem& item) { return !canAccomodate(item.asset); });
    for (BinItem& item : items)
        item.tagged = false;
    return !items.empty() && appendMissing(std::move(items));
}

// --- removing ------------------------------------------------------------------------------------

template <class Key> bool BinData::removeFirst(const Key& key) {
    const Change change(*this);
    const int at = indexOf(key);
    if (at < 0)
        return false;
    contents_.items.erase(contents_.items.begin() + at);
    index_->drop();
    addModifications(kModItemsRemoved);
    return true;
}

bool BinData::remove(const Cookie& asset) { return removeFirst(asset); }
bool BinData::remove(const IdStamp& item) { return removeFirst(item); }

bool BinData::remove(const CookieVec& assets) {
    std::unordered_map<Cookie, std::size_t> due;
    for (const Cookie& asset : assets)
        ++due[asset];
    const Change change(*this);
    const CookieVec gone = takeOut([&](const BinItem& item) {
        const auto found = due.find(item.asset);
        if (found == due.end() || found->second == 0)
            return false;
        --found->second;
        return true;
    });
    if (!gone.empty())
        addModifications(kModItemsRemoved);
    return !gone.empty();
}

void BinData::clear() {
    const Change change(*this);
    if (contents_.items.empty())
        return;
    contents_.items.clear();
    index_->drop();
    addModifications(kModItemsRemoved);
}

template <class Test> CookieVec BinData::takeOut(const Test& goes) {
    CookieVec gone;
    std::erase_if(contents_.items, [&](const BinItem& item) {
        if (!goes(item))
            return false;
        gone.push_back(item.asset);
        return true;
    });
    if (!gone.empty())
        index_->drop();
    return gone;
}

// --- what the managers tell ----------------------------------------------------------------------

void BinData::handleDeletions(const CookieVec& assets, const LightweightString<char>& reason) {
    const std::unordered_set<Cookie> deleted(assets.begin(), assets.end());
    const Change change(*this);
    CookieVec gone = takeOut([&](const BinItem& item) { return deleted.count(item.asset); });
    if (gone.empty())
        return;
    const BinBatch batch(*this, reason);
    Modification removal(kModItemsRemoved, Cookie());
    removal.add(gone);
    addModification(removal);
}

void BinData::handleLogsModified(const std::vector<EditManager::Modification>& changes) {
    std::vector<EditManager::Modification> concerned;
    for (const EditManager::Modification& one : changes)
        if (contains(one.edit))
            concerned.push_back(one);
    if (!concerned.empty())
        handleModifications(concerned);
}

void BinData::handleDocumentsModified(const CookieVec& documents) {
    CookieVec concerned;
    for (const Cookie& document : documents)
        if (contains(document))
            concerned.push_back(document);
    tellAssetsChanged(std::move(concerned));
}

void BinData::handleModifications(const std::vector<EditManager::Modification>& changes) {
    CookieVec edits;
    for (const EditManager::Modification& one : changes)
        edits.push_back(one.edit);
    tellAssetsChanged(std::move(edits));
}

void BinData::tellAssetsChanged(CookieVec assets) {
    if (assets.empty())
        return;
    Modification change(kModUncounted, Cookie());
    change.add(assets);
    addModification(change);
}
