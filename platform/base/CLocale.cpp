#include "platform/base/CLocale.h"

#include <clocale>
#include <cstdio>
#include <locale.h>

namespace cutroom {

int formatInC(char* buffer, std::size_t size, const char* pattern, std::va_list args) noexcept {
    static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", locale_t{});
    const locale_t before = plain ? ::uselocale(plain) : locale_t{};
    const int length = std::vsnprintf(buffer, size, pattern, args);
    if (before)
        ::uselocale(before);
    return length;
}

} // namespace cutroom
