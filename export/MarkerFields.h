// The custom fields of markers, as files name them.
#pragma once

#include "platform/base/Export.h"
#include "platform/store/Cue.h"

#include <string>
#include <vector>

namespace cutroom {

struct MarkerField {
    std::string key;  // of the cue's metadata
    std::string name; // in the file: the key, with a number behind it where the key is taken
};

// The fields that the open project defines for markers, in its order. No name equals one that every
// marker has anyway: name, description, in, out, colour.
CUTROOM_API std::vector<MarkerField> markerFields();

} // namespace cutroom
