#include "filters/UserFilter.h"

#include "filters/ProjectFilterManager.h"
#include "platform/host/StringTable.h"
#include "platform/project/Savers.h"

#include <algorithm>

const char* UserFilter::getFileExtension() noexcept { return "filter"; }

// For `take`, which reads it: it counts as saved until something changes.
UserFilter::UserFilter(const Cookie& id) : ProjectFilterBase(id) { saved_ = changes_.load(); }

UserFilter::UserFilter(const Cookie& id, LightweightString<wchar_t> name, eVisibility visibility,
                       FilterBins bins)
    : ProjectFilterBase(id, std::move(name)) {
    cacheVisibility(visibility);
    setResults(std::move(bins));
}

UserFilter::~UserFilter() = default;

iProjectFilter::eResultsType UserFilter::getResultsType() const { return resultsTypeByCount(); }
iProjectFilter::eCreator UserFilter::getCreator() const { return kUser; }

LightweightString<wchar_t> UserFilter::getDescription() const {
    return resourceStrW(cutroom::kResFilterUser + cutroom::kResFilterDescription);
}

void UserFilter::setVisibility(eVisibility visibility) {
    show(visibility);
    writePreference();
}

void UserFilter::show(eVisibility visibility) {
    cacheVisibility(visibility);
    ++changes_;
    cutroom::Savers::noteChange();
}

void UserFilter::clear() {
    auto& manager = ProjectFilterManager::instance();
    const Kv::Ptr<UserFilter> self(this);
    const auto owned = manager.getUserFilters();
    if (std::find(owned.begin(), owned.end(), self) == owned.end())
        ProjectFilterBase::clear();
    else
        manager.updateFilter(self, {}); // why it cannot has been logged
}

void UserFilter::rename(const LightweightString<wchar_t>& name) {
    const eVisibility visibility = getVisibility();
    setName(name);
    show(visibility);
}

void UserFilter::setContents(FilterBins bins) {
    setResults(std::move(bins));
    ++changes_;
    cutroom::Savers::noteChange();
}

bool UserFilter::isDirty() const {
    const FilterBins bins = peekResults();
    return changes_ != saved_ ||
           std::any_of(bins.begin(), bins.end(), [](const auto& bin) { return bin->isDirty(); });
}

cutroom::Status UserFilter::take(const JSON::Element& object, const std::string& file) {
    if (cutroom::Status read = fromElement(object, file); !read)
        return read;
    saved_ = changes_.load();
    return {};
}

UserFilter::ChangeCounts UserFilter::changeCounts() const {
    ChangeCounts counts{changes_, {}};
    for (const Kv::Ptr<FilterBinData>& bin : peekResults())
        counts.bins.emplace_back(bin, bin->changeCount());
    return counts;
}

void UserFilter::setSaved(const ChangeCounts& counts) {
    saved_ = counts.own;
    for (const auto& [bin, count] : counts.bins)
        bin->setSaved(count);
}
