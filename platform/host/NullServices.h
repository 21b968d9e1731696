// What answers when no host is installed.
#pragma once

#include "platform/host/Host.h"

namespace cutroom {

// A full set (save the file system) of services that answer harmlessly. They live for ever.
const HostServices& nullServices() noexcept;

} // namespace cutroom
