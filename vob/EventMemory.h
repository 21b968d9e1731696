// `EventMemory`: what stepping from event to event keeps from one search to the next.
#pragma once

#include "vob/CueStops.h"

#include <cstddef>
#include <vector>

namespace cutroom {

// Belongs to one viewed edit; user-interface thread.
struct EventMemory {
    CueStops cues;
    // Where each channel's cuts were found last: the next ones lie beside them. Only hints.
    std::vector<std::size_t> cuts;
};

} // namespace cutroom
