// `SearchBin`: a bin made from a search.
//
// It is one of two things. Results as they were found: they stay, may be changed like those of any
// bin, and have the criteria kept beside them. Or dynamic, with the criteria in a file
// "<name>.criteria": the search is done when the bin is first looked at after the project was
// opened, and the bin follows the project from then on.
#pragma once

#include "filters/FilterBinData.h"
#include "filters/ProjectSearch.h"

#include <optional>
#include <string>

// Any thread, as `FilterBinData`. The criteria have a lock of their own, a leaf.
class CUTROOM_API SearchBin final : public FilterBinData {
public:
    // Without criteria; `read` follows.
    SearchBin();
    // Dynamic. The cookie follows from the name, so it is the same in every session.
    SearchBin(const LightweightString<wchar_t>& name, const ProjectSearch::Criteria& criteria);
    // Results, copied under a fresh cookie, with the criteria when they are known.
    explicit SearchBin(const BinData& results,
                       const std::optional<ProjectSearch::Criteria>& criteria = {});
    ~SearchBin() override;

    // What was searched for; nothing for results that came from elsewhere.
    std::optional<ProjectSearch::Criteria> getCriteria() const;
    // Replaces the criteria; a dynamic bin that has been looked at is worked out anew.
    void setCriteria(const ProjectSearch::Criteria& criteria);

    // The name that a dynamic bin's criteria are kept under, whatever it is called now.
    LightweightString<wchar_t> keptAs() const;

    LightweightString<char> getTypeID() const override; // "Search"
    bool isDynamic() const override { return dynamic_; }
    // Beside the identity: "Criteria" when known, and "Dynamic" or the items.
    void write(JSON::Builder& object) const override;
    cutroom::Status read(const JSON::Element& object, const std::string& file) override;
    // Saves the search results.
    cutroom::Status save() override;
    using FilterBinData::save;

    // The cookie of the dynamic bin of that name.
    static Cookie fixedID(const LightweightString<wchar_t>& name) noexcept;

protected:
    Items gather() const override;
    std::optional<BinItem> itemOf(const Cookie& asset) const override;

private:
    mutable CriticalSection criteriaLock_{LockRank::leaf};
    std::optional<ProjectSearch::Criteria> criteria_ CUTROOM_GUARDED_BY(criteriaLock_);
    LightweightString<wchar_t> keptAs_ CUTROOM_GUARDED_BY(criteriaLock_);
    std::atomic<bool> dynamic_{false};
};
