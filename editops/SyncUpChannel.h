// One channel of a shot, brought onto the timeline of a synchronised log.
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/base/Time.h"
#include "platform/store/EditPtr.h"

namespace cutroom {

// Where a shot lies: its time 0 is at `at` of the log (seconds); the log covers 0 to `length`.
struct SyncPlace {
    double at = 0;
    Flicks length = 0;
};

// Adds a channel of the type of `channel` to `log` and gives it what of `channel` lies inside the
// log, black around it, with its levels, effects, names and font. Cuts move to the nearest frame;
// material next to black begins on its first whole frame and ends on its last; what plays at a
// moment does not change. The empty id when a time lies outside the range of an edit. No lock is
// held on entry.
//
//   channel      |--A--|B|         material, cuts off the frame
//   frames     :  :  :  :  :  :
//   log        |··|-A-|-B|···|
CUTROOM_API IdStamp addSyncedChannel(const EditPtr& log, const EditPtr& shot,
                                     const IdStamp& channel, const SyncPlace& place);

} // namespace cutroom
