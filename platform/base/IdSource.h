// Where fresh identifiers and the time of day come from. The host installs its own source, so a
// test can make every run the same; without one, the system's clock and entropy serve.
#pragma once

#include "platform/base/Export.h"

#include <cstdint>

namespace cutroom {

class CUTROOM_API iIdSource {
public:
    virtual ~iIdSource();
    // 64 bits never given before by this or any other process. Any thread.
    virtual std::uint64_t nextId() = 0;
    // Seconds since 1970-01-01T00:00:00Z. Any thread.
    virtual std::uint32_t secondsNow() = 0;
};

// Installs `source` (null: back to the system's); gives the one before. The caller keeps it alive.
CUTROOM_API iIdSource* installIdSource(iIdSource* source) noexcept;
// The source in force.
CUTROOM_API iIdSource& idSource() noexcept;

} // namespace cutroom
