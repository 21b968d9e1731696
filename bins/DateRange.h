// `DateRange`: a stretch of calendar time.
#pragma once

#include <cstdint>
#include <limits>

// A value. Both ends are seconds since 1970-01-01T00:00:00Z and belong to the range; an end before
// the beginning makes it empty. Without arguments: all time, also what has no known time (0).
struct DateRange {
    DateRange() = default;
    DateRange(std::uint32_t first, std::uint32_t last) : from(first), to(last) {}

    bool contains(std::uint32_t seconds) const noexcept { return from <= seconds && seconds <= to; }

    std::uint32_t from = 0;
    std::uint32_t to = std::numeric_limits<std::uint32_t>::max();

    friend bool operator==(const DateRange&, const DateRange&) = default;
};
