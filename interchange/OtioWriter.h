// Writes timelines in OpenTimelineIO JSON (.otio), in the schemas that its library reads from
// version 0.15 on: Timeline.1, Stack.1, Track.1, Clip.2, Gap.1, Transition.1, Marker.2.
#pragma once

#include "interchange/Timeline.h"

#include <string>
#include <vector>

namespace cutroom {

struct OtioText {
    std::string text;                  // UTF-8, indented by four
    std::vector<std::string> warnings; // what the file says less well than the timeline
};

// Writes `timeline` with all that it nests. The root is a Timeline, or again what it was read from
// (Clip, Gap, Track, Stack) while it is no more than that. Times, media, metadata, effects and
// members that the reader kept are repeated as they were written as long as they lead to the times,
// speeds and places that the timeline has; the rest is written exactly, at the rate of the source,
// as value and rate. The same timeline gives the same bytes.
CUTROOM_API OtioText writeOtio(const Timeline& timeline);

} // namespace cutroom
