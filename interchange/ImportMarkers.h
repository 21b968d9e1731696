// Turns the markers of a timeline into cues.
#pragma once

#include "interchange/Timeline.h"
#include "platform/store/Cue.h"

namespace cutroom {

// All markers in order of time: visible, placed by a person, a range where they last. How a marker
// was written and placed stays in its imported metadata.
CueList importedCues(const Timeline& timeline);

} // namespace cutroom
