// The version of the library, as compiled against and as linked. The build reads its number from
// here. Numbers follow semantic versioning; the first two are the SONAME's.
#pragma once

#include "platform/base/Export.h"

namespace cutroom {

inline constexpr int kVersionMajor = 0;
inline constexpr int kVersionMinor = 1;
inline constexpr int kVersionPatch = 0;

// The version of the linked library as "MAJOR.MINOR.PATCH": differs from the constants when the
// program was compiled against another one. Never null; any thread.
CUTROOM_API const char* version() noexcept;

} // namespace cutroom
