// `CueStops`: the times at which stepping from event to event stops for the cues of an edit.
#pragma once

#include "platform/store/Cue.h"

#include <array>
#include <cstdint>
#include <vector>

namespace cutroom {

// The times and range ends of all visible cues, each in ascending order, so that a binary search
// finds them although ranges end in any order. Follows the cues of one edit. User-interface thread.
class CueStops {
public:
    enum Kind : std::size_t { kOrdinary = 0, kSecond = 1 };

    // Brings the times into line with `cues`, unless that was done at this `changeCount` of the
    // edit. O(n log n) after a change, else O(1) without allocation.
    void follow(const CueList& cues, std::uint64_t changeCount);
    bool empty() const noexcept { return times_[kOrdinary].empty() && times_[kSecond].empty(); }
    // In ascending order, in seconds.
    const std::vector<double>& times(Kind kind) const noexcept { return times_[kind]; }

private:
    std::array<std::vector<double>, 2> times_;
    std::uint64_t changeCount_ = 0;
    bool following_ = false;
};

} // namespace cutroom
