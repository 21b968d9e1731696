// The clock by which things happen: transport, timers and autosave read time here and nowhere
// else, so an embedder or a test decides how time goes.
#pragma once

#include "platform/base/Export.h"

namespace cutroom {

class CUTROOM_API iClock {
public:
    virtual ~iClock();
    // Seconds since a moment that the clock chooses; never goes back. Any thread.
    virtual double now() const = 0;
};

} // namespace cutroom
