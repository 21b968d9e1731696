// Formatting that no locale changes.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace cutroom {

// `vsnprintf` with the numbers of the "C" locale, whatever the locale of the process or thread.
int formatInC(char* buffer, std::size_t size, const char* pattern, std::va_list args) noexcept
    __attribute__((format(printf, 3, 0)));

} // namespace cutroom
