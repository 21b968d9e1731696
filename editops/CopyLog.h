// What the edit operations said last: the one message of sync-up and cue-driven edits.
#pragma once

#include "platform/base/Export.h"

// The last message; empty before the first. It stays until the next one takes its place, and is not
// guarded: read it on the thread that ran the operation. The pointer is always the same.
CUTROOM_API const char* edcopy_get_log() noexcept;

namespace cutroom {

// Formats the message printf-style in place of the last one, cut to the buffer's 1023 bytes.
CUTROOM_API void setCopyLog(const char* pattern, ...) noexcept
    __attribute__((format(printf, 1, 2)));

} // namespace cutroom
