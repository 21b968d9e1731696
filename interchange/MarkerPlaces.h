// Where the places that a marker file names lie on one edit.
#pragma once

#include "export/CueTimecodes.h"
#include "platform/base/NumRange.h"
#include "platform/base/Status.h"
#include "platform/base/Time.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace cutroom {

// What the clock times of a file count.
enum class MarkerClock {
    timecode, // the programme's timecode as a clock: 01:00:10,000 is 10 s in one that starts at 1 h
    media,    // from the first frame of what is played
};

// The place that a timecode names on an edit that may run over midnight: one outside `extents`
// moves by whole days of labels to the first inside, and stays where none is. What begins after 0
// has room before it.
CUTROOM_API double onDayOf(const TimeRange& extents, double place, const TimecodeFormat& format);

// How the edit, which must be there, counted at the moment of making. A value.
class CUTROOM_API MarkerPlaces {
public:
    MarkerPlaces(const EditPtr& edit, MarkerClock clock);

    // The place of a timecode in seconds, as the exporters count them. The reason alone when it
    // names none: no timecode, drop frame where the edit counts without, or before the edit.
    Result<double> ofTimecode(std::string_view text) const;
    // The same of a clock time, at the nearest frame. One without a timecode (drop frame) is that
    // of the next frame.
    Result<double> ofClock(Flicks time) const;
    // A place some frames on.
    double framesOn(double seconds, std::int64_t frames) const;
    // The frame in which a place lies; equal for places that one timecode names.
    std::int64_t frameAt(double seconds) const noexcept { return timecodes_.frameAt(seconds); }
    // Lies behind the end of an edit that has one.
    bool isBehind(double seconds) const noexcept { return end_ > 0 && seconds > end_; }
    const TimecodeFormat& format() const noexcept { return timecodes_.format(); }

private:
    Result<double> inside(double seconds, const std::string& text) const;

    CueTimecodes timecodes_;
    MarkerClock clock_;
    double start_ = 0;
    double end_ = 0;
};

} // namespace cutroom
