// Finds for each of many pictures the sound that was recorded with it.
#pragma once

#include "editops/SyncUpLabels.h"
#include "platform/base/Cookie.h"

#include <vector>

namespace cutroom {

// The sound of one picture, or why there is none.
struct SyncMatch {
    Cookie picture;
    Cookie sound;      // invalid: none
    SyncOffset offset; // of the sound, as `synchup_get_CELtime_offset` gives it
};

// For each picture, in their order, the sound whose labelled span covers the most of the picture's,
// of several the first, among those that `synchup_get_CELtime_offset` accepts. A sound may go with
// several pictures, never with itself. Where none is accepted, the reason is that of the sound that
// covers most, and kSyncNoOverlap when none covers any. Opens each shot once, one at a time;
// O(n log n) where spans overlap little.
CUTROOM_API std::vector<SyncMatch> matchSounds(const CookieVec& pictures, const CookieVec& sounds,
                                               const synchup_params& params);

} // namespace cutroom
