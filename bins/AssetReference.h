// `AssetReference`: one entry of a container: an asset, and the range of it that is meant.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/NumRange.h"
#include "platform/base/Time.h"

// A value. The range is in seconds of the asset; the invalid range means the whole of it.
struct AssetReference {
    AssetReference() = default;
    AssetReference(const Cookie& asset) : cookie(asset) {}
    AssetReference(const Cookie& asset, const TimeRange& part) : cookie(asset), range(part) {}

    static TimeRange invalidRange() { return {kNoTime, kNoTime}; }
    bool hasRange() const { return !(range == invalidRange()); }

    Cookie cookie;
    TimeRange range = invalidRange();

    friend bool operator==(const AssetReference&, const AssetReference&) = default;
};
