// What kind of media a location names, by its text alone.
#pragma once

#include "platform/base/Export.h"

#include <string_view>

namespace cutroom {

// A path or URL of one still picture, by its extension (in any case). A pattern that stands for a
// numbered sequence ("shot.%04d.exr", "shot.####.exr") is none.
CUTROOM_API bool isStillImage(std::string_view location);

} // namespace cutroom
