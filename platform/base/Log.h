// The log: one call, printf-style.
#pragma once

#include "platform/base/Export.h"

#include <string_view>

// Formats the message and hands it to the installed sink (standard error without one). The text
// ends where the caller ends it; nothing is added. Any thread.
CUTROOM_API void LogBoth(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

namespace cutroom {

class CUTROOM_API iLogSink {
public:
    virtual ~iLogSink();
    // Takes one message. Called one at a time, on any thread; must not log.
    virtual void write(std::string_view message) = 0;
};

// Installs `sink` (null: standard error); gives the one before. The caller keeps it alive.
CUTROOM_API iLogSink* installLogSink(iLogSink* sink) noexcept;

} // namespace cutroom
