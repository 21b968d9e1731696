// `cutroom::FieldIndex`: which assets have which value in one field of the project database.
#pragma once

#include "filters/FollowState.h"
#include "platform/base/Annotations.h"
#include "platform/base/Locks.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cutroom {

// Made in one pass over the assets that have a text there at the first look; follows the changes of
// the database from then on. About 200 bytes for each of them. Any thread, as `FilterBinData`.
class FieldIndex {
public:
    // Values that came to be, and values that no asset has any longer.
    struct Changes {
        std::vector<std::string> came;
        std::vector<std::string> gone;
    };
    // Splits a field's text into its values.
    using Splitter = std::vector<std::string> (*)(std::string_view text);

    FieldIndex(std::string field, Splitter splitter)
        : field_(std::move(field)), splitter_(splitter) {}

    // Makes the index, unless that was done.
    void prepare();
    bool ready() const noexcept { return state_.ready(); }
    // Takes over that records of these assets have changed; under the change lock. Nothing before
    // the index was made.
    Changes assetsChanged(const CookieVec& assets);

    // The assets that have the value, in the order of their cookies; makes the index.
    CookieVec assetsOf(const std::string& value);
    bool has(const Cookie& asset, const std::string& value);
    // Every value, in the order of their bytes; makes the index.
    std::vector<std::string> values();

private:
    using Values = std::vector<std::string>;
    struct Tables {
        std::unordered_map<Cookie, Values> byAsset; // without duplicates
        std::map<std::string, std::set<Cookie>, std::less<>> byValue;
    };

    Values valuesOf(std::string_view text) const;
    void enter(Tables& tables, const Cookie& asset, Values values) const;
    void replace(const Cookie& asset, Values values, Changes& changes) CUTROOM_REQUIRES(lock_);

    const std::string field_;
    const Splitter splitter_;
    FollowState state_;
    mutable CriticalSection lock_{LockRank::leaf};
    Tables tables_ CUTROOM_GUARDED_BY(lock_);
};

} // namespace cutroom
