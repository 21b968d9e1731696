// `ProjectFilterBase`: what most project filters are made of: an identity, a name, result bins, the
// visibility as a preference, and the form in which filters are kept in files.
#pragma once

#include "filters/iProjectFilter.h"
#include "platform/base/Annotations.h"
#include "platform/base/Locks.h"
#include "platform/base/Status.h"
#include "platform/files/JsonElement.h"

#include <string>

// Any thread, as `iProjectFilter`: a lock of its own, a leaf, guards name, visibility and the list
// of bins, and is held while nothing else is called.
class CUTROOM_API ProjectFilterBase : public iProjectFilter {
public:
    ~ProjectFilterBase() override;

    Cookie getID() const override { return id_; }
    LightweightString<wchar_t> getName() const override;
    // The three fill bins that have not been looked at yet (`FilterBinData::fill`).
    Bins getBins() const override;
    const FilterBins& getResults() const override;
    bool isEmpty() const override;
    // Presents no bin; fills none.
    bool empty() const override;
    // What was read before; else the preference "<name> : visiblity", by default
    // `getDefaultVisibility`.
    eVisibility getVisibility() const override;
    // Sets that preference.
    void setVisibility(eVisibility visibility) override;
    void clear() override;

    // The bins as they are, filled or not: for keeping them up to date.
    FilterBins peekResults() const;
    // Assets of the project have come, changed or gone: bins that have been looked at follow.
    virtual void assetsChanged(const CookieVec& assets);

protected:
    // Without results, visibility not read yet.
    explicit ProjectFilterBase(const Cookie& id, LightweightString<wchar_t> name = {});

    virtual eVisibility getDefaultVisibility() const;
    // `kGroupedResults` for more than one bin, else `kFlatResults`.
    eResultsType resultsTypeByCount() const;

    // --- the filter file (docs/formats/filter.md) ----------------------------------------------
    // Reads name, visibility (`kOptional` when the file names none) and bins, which are appended.
    // On failure, which names file, place and reason, the filter is as it was.
    cutroom::Status load(const LightweightString<wchar_t>& path);
    // Writes all three, crash-safely; the visibility only when it is not `kOptional`. `failed`
    // for what `load` would refuse: more than 10,000 bins or 1 GiB, two bins of one cookie.
    cutroom::Status save(const LightweightString<wchar_t>& path) const;
    // What `save` writes, and its reading; `file` is for messages.
    cutroom::Result<std::string> asText() const;
    cutroom::Status fromElement(const JSON::Element& object, const std::string& file);

    void setName(LightweightString<wchar_t> name);
    // The value without the preference, and the preference of the present name and value.
    void cacheVisibility(eVisibility visibility);
    void writePreference() const;
    // Replaces, appends, takes out; nothing is told. Derived classes whose results may be read by
    // `getResults` meanwhile change them on one thread only.
    void setResults(FilterBins results);
    void appendResult(const Kv::Ptr<FilterBinData>& bin);
    bool removeResult(const Kv::Ptr<BinData>& bin);

private:
    // Held as one more value of eVisibility: not read from the preferences yet.
    static constexpr eVisibility kUnread = static_cast<eVisibility>(3);

    LightweightString<char> makePrefKey() const;
    static void note(const FilterBins& bins, bool presented) noexcept;

    const Cookie id_;
    mutable CriticalSection lock_{LockRank::leaf};
    mutable eVisibility visibility_ CUTROOM_GUARDED_BY(lock_) = kUnread;
    FilterBins results_ CUTROOM_GUARDED_BY(lock_);
    LightweightString<wchar_t> name_ CUTROOM_GUARDED_BY(lock_);
};
