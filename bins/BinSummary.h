// `BinSummary`: what is known of a bin without opening it.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Strings.h"

#include <cstdint>
#include <map>

class BinData;

// A value. Known to users as `BinManager::BinSummary`.
struct CUTROOM_API BinSummary {
    // A summary of no bin.
    BinSummary() = default;
    // Reads the bin, under its lock as a reader.
    explicit BinSummary(const BinData& bin);

    bool valid() const noexcept { return id.valid(); }
    // False for bins ('G'), which live in this project alone; groups are tied to something else.
    bool isSynced() const noexcept { return id.type() != 'G'; }

    Cookie id;
    LightweightString<wchar_t> name;
    // Edits, logs and documents of kind 'D', as far as the bin accepts them.
    std::int32_t logCount = 0;
    bool permanent = false;
    LightweightString<wchar_t> extID;
    // Seconds since 1970.
    std::uint32_t modTime = 0;
    std::uint32_t created = 0;
    // The bins and groups that the bin holds, in its order; none while it accepts none.
    LightweightVector<Cookie> children;

    // By cookie.
    friend bool operator<(const BinSummary& a, const BinSummary& b) noexcept {
        return Cookie::compare(a.id, b.id) < 0;
    }
    friend bool operator==(const BinSummary&, const BinSummary&) = default;
};

namespace cutroom {

// In the order of the cookies.
using BinSummaries = std::map<Cookie, BinSummary>;

} // namespace cutroom
