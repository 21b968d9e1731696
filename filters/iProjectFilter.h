// `iProjectFilter`: a named view of the whole project that presents a set of bins, its results.
#pragma once

#include "filters/Identified.h"
#include "filters/iMultiBinContainer.h"
#include "platform/base/Strings.h"

#include <string_view>
#include <vector>

class FilterBinData;

// The bins that a filter presents.
using FilterBins = std::vector<Kv::Ptr<FilterBinData>>;

// Owned by `ProjectFilterManager`, held through `Kv::Ptr`. Any thread may ask, but not under the
// lock of a container that it only reads (docs/threads.md). Results are worked out when they are
// looked at first, and follow the project from then on.
class CUTROOM_API iProjectFilter : public iMultiBinContainer, public Identified {
public:
    enum eVisibility : int { kAlways = 0, kOptional = 1, kNever = 2 };
    enum eCreator : int { kSystem = 0, kUser = 1 };
    // How results are to be shown: as one flat list, as a group of bins, as results of searches.
    enum eResultsType : int { kFlatResults = 0, kGroupedResults = 1, kSearchResults = 2 };

    ~iProjectFilter() override;

    // --- slots 1 to 4: getBins, add, remove, empty of `iMultiBinContainer` -----------------------
    using iMultiBinContainer::remove;

    virtual LightweightString<wchar_t> getName() const = 0;
    virtual eResultsType getResultsType() const = 0;
    // The result bins, in the order of `getBins`. The reference holds until the results change;
    // threads other than the one that changes them use `getBins`.
    virtual const FilterBins& getResults() const = 0;
    // By default `kSystem`.
    virtual eCreator getCreator() const;
    // Whether the filter is shown; a preference, see `ProjectFilterBase`.
    virtual eVisibility getVisibility() const = 0;
    virtual void setVisibility(eVisibility visibility) = 0;
    // No result bin holds anything.
    virtual bool isEmpty() const = 0;
    // Drops the results.
    virtual void clear() = 0;
    // What the filter shows, in a sentence for the user.
    virtual LightweightString<wchar_t> getDescription() const = 0;
    // Takes several bins out. By default none.
    virtual void remove(const Bins& bins);

    // "always", "optional", "never": the persisted forms. Empty for any other value.
    static LightweightString<char> visibilityToString(eVisibility visibility);
    // Of UTF-8: `kNever`, `kAlways` for exactly those words, `kOptional` for every other text.
    static eVisibility visibilityFromString(std::string_view text);
};
