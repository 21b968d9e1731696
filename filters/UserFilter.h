// `UserFilter`: a filter that the user made and named: bins with items, or searches that follow the
// project. Kept as "<cookie>.filter" in the folder of the filters.
#pragma once

#include "filters/FilterBinData.h"
#include "filters/ProjectFilterBase.h"

#include <atomic>
#include <cstdint>
#include <utility>
#include <vector>

// Made by `ProjectFilterManager` alone. Any thread, as `ProjectFilterBase`.
class CUTROOM_API UserFilter final : public ProjectFilterBase {
public:
    // The extension of the files, "filter".
    static const char* getFileExtension() noexcept;

    // Without results and without a name; cookies are of kind 'F'.
    explicit UserFilter(const Cookie& id);
    // To be written; then `writePreference` follows, as after `rename` and `show`.
    UserFilter(const Cookie& id, LightweightString<wchar_t> name, eVisibility visibility,
               FilterBins bins);
    ~UserFilter() override;

    eResultsType getResultsType() const override;
    eCreator getCreator() const override;
    LightweightString<wchar_t> getDescription() const override;
    // Sets the preference and the value in the filter's file, which the next save writes.
    void setVisibility(eVisibility visibility) override;
    // Has the manager take all bins out, which saves and tells; they stay when it cannot be saved
    // (logged).
    void clear() override;
    // Replaces the bins. The manager's, as the next: it saves and tells.
    void setContents(FilterBins bins);
    // Gives another name; the visibility stays.
    void rename(const LightweightString<wchar_t>& name);
    void show(eVisibility visibility);
    using ProjectFilterBase::writePreference;

    // Something changed since the last save: the filter itself or one of its bins.
    bool isDirty() const;
    // What `save` would write, and its reading; nothing is told.
    cutroom::Result<std::string> getFileText() const { return asText(); }
    cutroom::Status take(const JSON::Element& object, const std::string& file);
    // Counts what changed; taken before the text, it tells `setSaved` what has been written.
    struct ChangeCounts {
        std::uint64_t own = 0;
        std::vector<std::pair<Kv::Ptr<FilterBinData>, std::uint64_t>> bins;
    };
    ChangeCounts changeCounts() const;
    void setSaved(const ChangeCounts& counts);

private:
    std::atomic<std::uint64_t> changes_{1};
    std::atomic<std::uint64_t> saved_{0};
};
