#include "editops/CopyLog.h"

#include <cstdarg>
#include <cstdio>

namespace {

char lastMessage[1024];

} // namespace

const char* edcopy_get_log() noexcept { return lastMessage; }

void cutroom::setCopyLog(const char* pattern, ...) noexcept {
    std::va_list values;
    va_start(values, pattern);
    std::vsnprintf(lastMessage, sizeof lastMessage, pattern, values);
    va_end(values);
}
