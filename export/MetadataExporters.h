// The exporters that this library has.
#pragma once

#include "platform/base/Export.h"

namespace cutroom {

// Registers one of each with the bin manager, in the order SRT, Subtitles, JSON, XML, CSV; those
// registered under their names are replaced. Any thread.
CUTROOM_API void registerMetadataExporters();

} // namespace cutroom
