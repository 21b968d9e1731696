// From the labels of an edit list to frames: which rate, which mode, and what midnight and broken
// record times mean.
#pragma once

#include "interchange/EdlList.h"
#include "interchange/Timeline.h"
#include "platform/base/Status.h"
#include "platform/base/Timecode.h"

#include <optional>
#include <string>
#include <vector>

namespace cutroom {

// How a list counts.
struct EdlClock {
    Kv::FrameRate rate;
    bool recordDrop = false;
    bool assumed = false; // chosen by comparing lengths

    // Record labels as frames.
    std::int64_t record(const EdlLabel& label) const noexcept;
    std::int64_t day() const noexcept; // frames of 24 hours
};

// The rate given, or the one of 24, 25, 30, 50 and 60 above every record frame number at which
// most source and record lengths agree; the 1000/1001 form of it where drop frame occurs. Says in
// `warnings` what was assumed. Fails, naming the file and the line, when a record label cannot
// exist at the rate given, or at any.
Result<EdlClock> chooseClock(const EdlList& list, std::optional<Kv::FrameRate> given,
                             const std::string& file, std::vector<std::string>& warnings);

// The rate that a list which counts so is taken for where nobody tells: drop frame says its own,
// otherwise the lowest usual one with these labels; no rate when none has them.
Kv::FrameRate edlRateRead(const TimecodeFormat& written) noexcept;

// An event in frames of the record, counted on over midnight.
struct EdlPlace {
    std::int64_t in = 0;
    std::int64_t out = 0;
    Flicks source = 0; // media time of the first frame
    Kv::FrameRate sourceRate;

    std::int64_t length() const noexcept { return out - in; }
};

struct EdlPlaces {
    std::vector<EdlPlace> events; // one for each event, in their order
    std::int64_t first = 0;       // the earliest record in
    std::int64_t last = 0;        // the latest record out
    bool overMidnight = false;

    // The frame that a record label names, seen from the first.
    std::int64_t fromFirst(const EdlLabel& label, const EdlClock& clock) const noexcept;
};

EdlPlaces placeEvents(const EdlList& list, const EdlClock& clock,
                      std::vector<std::string>& warnings);

} // namespace cutroom
