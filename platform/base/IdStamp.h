// `IdStamp`: identifier of a channel of an edit; also names clients, mixes, bin items and groups.
#pragma once

#include "platform/base/Export.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Three 32-bit parts. The empty id is (0, 0, 0). A value: any thread, no lock.
class CUTROOM_API IdStamp {
public:
    // The empty id.
    constexpr IdStamp() noexcept = default;
    constexpr IdStamp(std::uint32_t origin, std::uint32_t time, std::uint32_t ticks) noexcept
        : origin_(origin), time_(time), ticks_(ticks) {}

    // A fresh id, never equal to another in any process (from the installed id source).
    static IdStamp make();

    // Tells whether any part is not 0.
    constexpr bool valid() const noexcept { return (origin_ | time_ | ticks_) != 0; }
    constexpr std::uint32_t getOrigin() const noexcept { return origin_; }
    constexpr std::uint32_t getTime() const noexcept { return time_; }
    constexpr std::uint32_t getTickCount() const noexcept { return ticks_; }

    // The parts in lower-case hexadecimal joined by points, without blanks: "0.0.0", "2.1f.3".
    std::string asString() const;
    // Reads what `asString` writes, and nothing else.
    static std::optional<IdStamp> fromString(std::string_view text) noexcept;

    friend constexpr auto operator<=>(const IdStamp&, const IdStamp&) noexcept = default;

private:
    std::uint32_t origin_ = 0;
    std::uint32_t time_ = 0;
    std::uint32_t ticks_ = 0;
};

template <> struct std::hash<IdStamp> {
    std::size_t operator()(const IdStamp& id) const noexcept {
        const std::uint64_t high = (std::uint64_t{id.getOrigin()} << 32) | id.getTime();
        return static_cast<std::size_t>((high ^ (high >> 29)) * 0x9E3779B97F4A7C15ull) ^
               id.getTickCount() * 0x85EBCA6Bu;
    }
};
