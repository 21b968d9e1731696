// Time: seconds as `double` at every interface, whole flicks inside the edit store.
//
// A flick is 1/705,600,000 of a second. The frame of every rate in use (24000/1001, 24, 25,
// 30000/1001, 30, 48, 50, 60000/1001, 60, 120) and the sample of 44.1 and 48 kHz are whole numbers
// of flicks, so times on the timeline are exact and equal means equal.
#pragma once

#include "platform/base/Export.h"

#include <cmath>
#include <cstdint>

// There is no time: an unset mark, an unbounded cue end, a failed offset.
inline constexpr double kNoTime = 1e99;
// Times closer than this count as the same where an operation says so.
inline constexpr double kTimeTolerance = 1e-6;

namespace cutroom {

using Flicks = std::int64_t;

inline constexpr Flicks kFlicksPerSecond = 705'600'000;
// The largest distance from 0 that the store accepts: about 100 years.
inline constexpr Flicks kMaxSeconds = Flicks{86'400} * 366 * 100;
inline constexpr Flicks kMaxFlicks = kFlicksPerSecond * kMaxSeconds;

// Tells whether `seconds` is finite and within the store's range.
inline bool isStorableTime(double seconds) noexcept {
    return std::isfinite(seconds) && std::fabs(seconds) <= static_cast<double>(kMaxSeconds);
}
// The nearest flick. `seconds` must be storable.
inline Flicks toFlicks(double seconds) noexcept {
    return static_cast<Flicks>(std::llround(seconds * static_cast<double>(kFlicksPerSecond)));
}
inline double toSeconds(Flicks flicks) noexcept {
    return static_cast<double>(flicks) / static_cast<double>(kFlicksPerSecond);
}

} // namespace cutroom
