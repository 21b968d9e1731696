// `EventInfo`: what looking for the next or previous event of a viewed edit finds.
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/base/Time.h"

// A value. Times in seconds.
struct CUTROOM_API EventInfo {
    double time = kNoTime;      // of the event; the start time when there is none
    double startTime = kNoTime; // from where it was looked for
    IdStamp channel;            // the first selected one; empty when none is
    int kind = 0;               // always 0

    // False for a start that is not a number, too.
    bool found() const noexcept { return time < startTime || time > startTime; }
};
