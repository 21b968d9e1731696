#include "bins/BinFileText.h"

#include "platform/base/Strings.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <system_error>
#include <utility>

namespace cutroom {

namespace {

// The number at the beginning of `text`, up to the first character that is not part of it.
template <class Number> std::optional<Number> leadingNumber(std::string_view text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    if (text.substr(0, 1) == "+" && text.substr(1, 1) != "-")
        text.remove_prefix(1);
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc())
        return std::nullopt;
    if constexpr (std::is_floating_point_v<Number>)
        if (!std::isfinite(number))
            return std::nullopt;
    return number;
}

std::optional<std::pair<std::string_view, std::string_view>>
twoParts(std::string_view text) noexcept {
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos || text.front() != '(' ||
        text.find(',', comma + 1) != std::string_view::npos)
        return std::nullopt;
    return std::pair(text.substr(1, comma - 1), text.substr(comma + 1));
}

void appendFloat(std::string& text, float number) {
    // Most are whole or not placed: those need no search for the shortest form.
    if (const float whole = std::nearbyint(number); whole == number && std::fabs(number) < 1e6f) {
        std::array<char, 16> digits;
        const int value = static_cast<int>(number);
        text.append(digits.data(),
                    std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
        return;
    }
    if (!std::isfinite(number))
        number = static_cast<float>(kUnreadable);
    std::array<char, 32> digits;
    text.append(digits.data(),
                std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

// A number at the beginning of a text, and where it ends: null when it is of another form.
struct Leading {
    const char* end;
    float number;
};

// Takes the digits from `at` on into `value`; gives where they end. The caller checks that there
// are not too many.
inline const char* takeDigits(const char* at, std::uint32_t& value) noexcept {
    for (std::uint32_t digit; (digit = static_cast<unsigned char>(*at) - std::uint32_t{'0'}) < 10;
         ++at)
        value = value * 10 + digit;
    return at;
}

// A plain decimal of few digits, which most are, before a character of another kind: its double is
// exact or, with at most seven decimals, never so close to the middle of two floats that rounding
// twice would matter.
inline Leading shortDecimal(const char* at) noexcept {
    static constexpr double kPowers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
    constexpr std::ptrdiff_t kMostDigits = 9;
    const bool negative = *at == '-';
    at += negative;
    std::uint32_t value = 0;
    const char* const point = takeDigits(at, value);
    std::ptrdiff_t digits = point - at;
    if (digits == 0 || digits > kMostDigits)
        return {};
    if (*point != '.') {
        const auto whole = static_cast<float>(value);
        return {point, negative ? -whole : whole};
    }
    const char* const end = takeDigits(point + 1, value);
    const std::ptrdiff_t decimals = end - point - 1;
    digits += decimals;
    if (digits > kMostDigits || decimals > 7)
        return {};
    const auto rounded = static_cast<float>(value / kPowers[decimals]);
    return {end, negative ? -rounded : rounded};
}

// As it is written, with short decimals; nothing for any other. The bracket at the end stops every
// number.
inline std::optional<XY<float>> shortPosition(std::string_view text) noexcept {
    if (text.size() < 2 || text.front() != '(' || text.back() != ')')
        return std::nullopt;
    const Leading x = shortDecimal(text.data() + 1);
    if (!x.end || *x.end != ',')
        return std::nullopt;
    const Leading y = shortDecimal(x.end + 1);
    if (y.end != text.data() + text.size() - 1)
        return std::nullopt;
    return XY<float>{x.number, y.number};
}

float readFloat(std::string_view text) noexcept {
    return leadingNumber<float>(text).value_or(static_cast<float>(kUnreadable));
}

} // namespace

void appendPosition(std::string& text, const XY<float>& position) {
    text += '(';
    appendFloat(text, position.x);
    text += ',';
    appendFloat(text, position.y);
    text += ')';
}

XY<float> readPosition(std::string_view text) noexcept {
    if (const auto position = shortPosition(text))
        return *position;
    const auto parts = twoParts(text);
    if (!parts)
        return {static_cast<float>(kUnreadable), static_cast<float>(kUnreadable)};
    return {readFloat(parts->first), readFloat(parts->second)};
}

std::string sizeText(const XY<int>& size) { return format("(%d,%d)", size.x, size.y); }

std::optional<XY<int>> readSize(std::string_view text) noexcept {
    const auto parts = twoParts(text);
    if (!parts)
        return std::nullopt;
    const std::optional<int> width = leadingNumber<int>(parts->first);
    const std::optional<int> height = leadingNumber<int>(parts->second);
    if (!width || !height || *width == kUnreadable || *height == kUnreadable)
        return std::nullopt;
    return XY<int>{*width, *height};
}

std::string BoolAsString(bool value) { return value ? "true" : "false"; }

std::optional<bool> BoolFromString(std::string_view text) noexcept {
    if (text == "true")
        return true;
    return text == "false" ? std::optional<bool>(false) : std::nullopt;
}

} // namespace cutroom
