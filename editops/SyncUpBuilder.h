// Builds a synchronised log out of two shots and an offset.
#pragma once

#include "editops/SyncUpParams.h"
#include "platform/base/Cookie.h"

namespace cutroom {

// How much of the two shots comes along.
enum class SyncContents {
    described,       // picture of the one, sound of the other, with groups, cues and keys
    pictureAndSound, // the channels alone
    allChannels,     // every channel that is not derived
};

// What `SyncUp.h` says of every operation there; the offset is that of the first shot.
CUTROOM_API Cookie buildSynced(const Cookie& first, const Cookie& second, double offset,
                               const synchup_params& params, SyncContents contents);

} // namespace cutroom
