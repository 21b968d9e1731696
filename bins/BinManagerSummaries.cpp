// The summaries of all bins, loaded or not.
#include "bins/BinManager.h"

#include <algorithm>
#include <utility>

bool BinManager::isKnown(const Cookie& bin) const {
    const CriticalSection::Lock held(mapsLock_);
    return loaded_.count(bin) != 0 || summaries_.count(bin) != 0;
}

void BinManager::forget(const Cookie& bin) {
    Loaded gone; // dies outside the lock
    const CriticalSection::Lock held(mapsLock_);
    ++removals_;
    if (const auto entry = loaded_.find(bin); entry != loaded_.end()) {
        gone = std::move(entry->second);
        loaded_.erase(entry);
    }
    if (summaries_.erase(bin) != 0)
        cacheIsCurrent_ = false;
}

void BinManager::noteChanged(const Cookie& bin) {
    const CriticalSection::Lock held(mapsLock_);
    if (const auto entry = loaded_.find(bin); entry != loaded_.end())
        ++entry->second.changes;
}

// A bin is read under its own lock, so not under that of the maps. When it changes meanwhile, the
// next caller reads it again.
void BinManager::summarise(const Cookie& id, const Loaded& seen) {
    BinSummary summary(*seen.bin);
    const CriticalSection::Lock held(mapsLock_);
    const auto entry = loaded_.find(id);
    if (entry == loaded_.end() || entry->second.bin != seen.bin ||
        entry->second.summarised >= seen.changes)
        return;
    entry->second.summarised = seen.changes;
    BinSummary& stored = summaries_[id];
    if (stored == summary)
        return;
    stored = std::move(summary);
    cacheIsCurrent_ = false;
}

void BinManager::refreshSummaries() {
    std::vector<std::pair<Cookie, Loaded>> stale;
    {
        const CriticalSection::Lock held(mapsLock_);
        for (const auto& entry : loaded_)
            if (entry.second.summarised != entry.second.changes)
                stale.push_back(entry);
    }
    for (const auto& [id, seen] : stale)
        summarise(id, seen);
}

BinSummary BinManager::getSummary(const Cookie& bin) {
    Loaded seen;
    {
        const CriticalSection::Lock held(mapsLock_);
        if (const auto entry = loaded_.find(bin); entry != loaded_.end())
            seen = entry->second;
    }
    if (seen.bin && seen.summarised != seen.changes)
        summarise(bin, seen);
    const CriticalSection::Lock held(mapsLock_);
    const auto stored = summaries_.find(bin);
    return stored == summaries_.end() ? BinSummary() : stored->second;
}

void BinManager::getAllBins(std::map<Cookie, BinSummary>& bins) {
    refreshSummaries();
    const CriticalSection::Lock held(mapsLock_);
    bins = summaries_;
}

CookieVec BinManager::findBinsContainingBin(const Cookie& bin) {
    refreshSummaries();
    CookieVec holders;
    const CriticalSection::Lock held(mapsLock_);
    for (const auto& [id, summary] : summaries_)
        if (std::find(summary.children.begin(), summary.children.end(), bin) !=
            summary.children.end())
            holders.push_back(id);
    return holders;
}

// The summaries tell which bins need not be opened; no summary counts documents of kind 'A'.
std::vector<Kv::Ptr<BinData>> BinManager::findBinsContainingLog(const Cookie& asset) {
    std::vector<Kv::Ptr<BinData>> holders;
    if (!asset.valid())
        return holders;
    const bool counted = asset.type() == 'E' || asset.type() == 'D';
    std::map<Cookie, BinSummary> bins;
    getAllBins(bins);
    for (const auto& [id, summary] : bins) {
        if (counted && summary.logCount == 0 && !isManaged(id))
            continue;
        if (Kv::Ptr<BinData> bin = getData(id); bin && bin->contains(asset))
            holders.push_back(std::move(bin));
    }
    return holders;
}
