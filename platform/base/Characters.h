// The characters of ASCII by their kinds, whatever the locale.
#pragma once

#include "platform/base/Export.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace cutroom {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool isCapital(char c) noexcept { return c >= 'A' && c <= 'Z'; }
constexpr bool isSmall(char c) noexcept { return c >= 'a' && c <= 'z'; }
constexpr bool isLetter(char c) noexcept { return isCapital(c) || isSmall(c); }

// The capital of a small letter; any other character as it is.
constexpr char toCapital(char c) noexcept {
    return isSmall(c) ? static_cast<char>(c - 'a' + 'A') : c;
}

// One digit or more, and nothing else.
constexpr bool isDigits(std::string_view text) noexcept {
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

// The value of a hexadecimal digit in either case; -1 for any other character.
constexpr int hexDigit(char c) noexcept {
    const char capital = toCapital(c);
    if (isDigit(c))
        return c - '0';
    return capital >= 'A' && capital <= 'F' ? capital - 'A' + 10 : -1;
}

// The text with each %XX as the byte that it stands for; nothing when a % is followed by no digits.
CUTROOM_API std::optional<std::string> percentDecoded(std::string_view text);

} // namespace cutroom
