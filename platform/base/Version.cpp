#include "platform/base/Version.h"

namespace cutroom {

const char* version() noexcept { return CUTROOM_VERSION; }

} // namespace cutroom
