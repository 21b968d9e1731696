#include "filters/FieldIndex.h"

#include "platform/project/ProjDb.h"
#include "platform/project/ProjDbFields.h"

#include <algorithm>
#include <utility>

namespace cutroom {

FieldIndex::Values FieldIndex::valuesOf(std::string_view text) const {
    Values values = splitter_(text);
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

void FieldIndex::enter(Tables& tables, const Cookie& asset, Values values) const {
    if (values.empty())
        return;
    for (const std::string& value : values)
        tables.byValue[value].insert(asset);
    tables.byAsset[asset] = std::move(values);
}

void FieldIndex::prepare() {
    if (state_.ready() || !state_.begin())
        return;
    Tables made;
    projdb::forEachHaving(field_, [&](const Cookie& asset, const std::string& text) {
        enter(made, asset, valuesOf(text));
        return true;
    });
    const ChangeLock oneAtATime;
    CookieVec touched;
    if (!state_.end(touched))
        return; // another thread was faster
    {
        const CriticalSection::Lock lock(lock_);
        tables_ = std::move(made);
    }
    assetsChanged(touched);
}

// Each record is read only now, so of two changes of one asset the first call settles both.
FieldIndex::Changes FieldIndex::assetsChanged(const CookieVec& assets) {
    Changes changes;
    if (!state_.follows(assets))
        return changes;
    for (const Cookie& asset : assets) {
        const auto record = projdb::find(asset);
        Values values = record ? valuesOf(record->getField(field_)) : Values();
        const CriticalSection::Lock lock(lock_);
        replace(asset, std::move(values), changes);
    }
    // A value that went and came back within the list has not changed, nor has one that came and
    // went.
    const CriticalSection::Lock lock(lock_);
    const auto& all = tables_.byValue;
    const auto isThere = [&all](const std::string& value) { return all.count(value) != 0; };
    std::erase_if(changes.came, [&](const std::string& value) { return !isThere(value); });
    std::erase_if(changes.gone, isThere);
    return changes;
}

void FieldIndex::replace(const Cookie& asset, Values values, Changes& changes) {
    const auto known = tables_.byAsset.find(asset);
    if (known == tables_.byAsset.end() ? values.empty() : known->second == values)
        return;
    if (known != tables_.byAsset.end()) {
        for (const std::string& value : known->second) {
            const auto at = tables_.byValue.find(value);
            at->second.erase(asset);
            if (!at->second.empty())
                continue;
            tables_.byValue.erase(at);
            changes.gone.push_back(value);
        }
        tables_.byAsset.erase(known);
    }
    for (const std::string& value : values)
        if (tables_.byValue.count(value) == 0)
            changes.came.push_back(value);
    enter(tables_, asset, std::move(values));
}

CookieVec FieldIndex::assetsOf(const std::string& value) {
    prepare();
    const CriticalSection::Lock lock(lock_);
    const auto at = tables_.byValue.find(value);
    return at == tables_.byValue.end() ? CookieVec()
                                       : CookieVec(at->second.begin(), at->second.end());
}

bool FieldIndex::has(const Cookie& asset, const std::string& value) {
    prepare();
    const CriticalSection::Lock lock(lock_);
    const auto at = tables_.byAsset.find(asset);
    return at != tables_.byAsset.end() &&
           std::binary_search(at->second.begin(), at->second.end(), value);
}

std::vector<std::string> FieldIndex::values() {
    prepare();
    const CriticalSection::Lock lock(lock_);
    std::vector<std::string> all;
    all.reserve(tables_.byValue.size());
    for (const auto& [value, assets] : tables_.byValue)
        all.push_back(value);
    return all;
}

} // namespace cutroom
