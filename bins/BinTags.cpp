// The tags of a bin's items, and what the bin accepts.
#include "bins/BinData.h"
#include "bins/BinIndex.h"
#include "bins/BinManager.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"

#include <algorithm>
#include <set>
#include <utility>

namespace {

bool isTaggedOfType(const BinItem& item, CookieType type) {
    return item.tagged && (type == BinData::kAnyType || item.getType() == type);
}

} // namespace

// --- tags ----------------------------------------------------------------------------------------

template <class Key> bool BinData::taggedOf(const Key& key) const {
    const SharedLock::Read lock(lock_);
    const int at = index_->find(contents_.items, key);
    return at >= 0 && contents_.items[static_cast<std::size_t>(at)].tagged;
}

bool BinData::isTagged(const Cookie& asset) const { return taggedOf(asset); }
bool BinData::isTagged(const IdStamp& item) const { return taggedOf(item); }

bool BinData::isTagged(unsigned index) const {
    const SharedLock::Read lock(lock_);
    return index < contents_.items.size() && contents_.items[index].tagged;
}

unsigned BinData::getNumTagged(CookieType type) const {
    const SharedLock::Read lock(lock_);
    return static_cast<unsigned>(
        std::count_if(contents_.items.begin(), contents_.items.end(),
                      [&](const BinItem& item) { return isTaggedOfType(item, type); }));
}

bool BinData::anyTagged(CookieType type) const {
    const SharedLock::Read lock(lock_);
    return std::any_of(contents_.items.begin(), contents_.items.end(),
                       [&](const BinItem& item) { return isTaggedOfType(item, type); });
}

template <class TagOf> bool BinData::changeTags(const TagOf& tagOf) {
    const Change lock(*this);
    Modification change(kModItemsTagged, Cookie());
    bool changed = false;
    for (std::size_t i = 0; i < contents_.items.size(); ++i) {
        BinItem& item = contents_.items[i];
        const bool tag = tagOf(i, item.tagged);
        if (std::exchange(item.tagged, tag) == tag)
            continue;
        changed = true;
        change.add(item.asset);
    }
    if (changed)
        addModification(change);
    return changed;
}

bool BinData::setTags(bool tag, int first, int last) {
    const auto from = static_cast<std::size_t>(std::max(first, 0));
    const auto to = static_cast<std::size_t>(last); // a negative one is past every end
    return changeTags(
        [&](std::size_t i, bool present) { return i >= from && i <= to ? tag : present; });
}

bool BinData::setTags(const std::map<unsigned, bool>& tags) {
    auto next = tags.begin();
    return changeTags([&](std::size_t i, bool present) {
        while (next != tags.end() && next->first < i)
            ++next;
        return next != tags.end() && next->first == i ? next->second : present;
    });
}

bool BinData::invertTags() {
    return changeTags([](std::size_t, bool present) { return !present; });
}

bool BinData::resetSelections() {
    return changeTags([](std::size_t, bool) { return false; });
}

Kv::Ptr<BinData> BinData::getSelectedItems() const {
    Items items = copyOfItems();
    std::erase_if(items, [](const BinItem& item) { return !item.tagged; });
    auto selected = Kv::makePtr<BinData>();
    const Change change(*selected);
    selected->contents_.items = std::move(items);
    return selected;
}

// --- what it accepts -----------------------------------------------------------------------------

bool BinData::allowNestedBins() {
    static const auto& always = *new cutroom::ConfigValue<int>("nested_bins", 0); // never destroyed
    return always.get() != 0 || EditorPreferences::getPreference("Behaviour : Nested bins", false);
}

bool BinData::canAccomodate(CookieType type) const {
    if (type == 'G' || type == 'M')
        return allowNestedBins();
    return type == 'D' || type == 'E';
}

bool BinData::canAccomodate(eLogType) const { return canAccomodate(CookieType('E')); }

bool BinData::canAccomodate(const Cookie& asset) const {
    const bool isBin = asset.type() == 'G' || asset.type() == 'M';
    return canAccomodate(asset.type()) && asset != getID() && !(isBin && isWithin(asset));
}

bool BinData::canAccomodate(const EditPtr& edit) const {
    return edit && canAccomodate(CookieType('E'));
}

// Looks for this bin below `bin`, by the summaries, so that no bin is opened.
bool BinData::isWithin(const Cookie& bin) const {
    const Cookie self = getID();
    std::set<Cookie> seen;
    CookieVec due{bin};
    while (!due.empty()) {
        const Cookie next = due.back();
        due.pop_back();
        if (next == self)
            return true;
        if (!seen.insert(next).second)
            continue;
        const auto children = BinManager::instance().getSummary(next).children;
        due.insert(due.end(), children.begin(), children.end());
    }
    return false;
}
