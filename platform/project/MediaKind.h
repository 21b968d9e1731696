// What kind of media a location names, by its text alone.
#pragma once

#include "platform/base/Export.h"

#include <string_view>

namespace cutroom {

// Tells whether a path or URL is that of one still picture, by its extension (in any case). The
// pattern of a numbered sequence ("shot.%04d.exr", "shot.####.exr") is not.
CUTROOM_API bool isStillImage(std::string_view location);

} // namespace cutroom
