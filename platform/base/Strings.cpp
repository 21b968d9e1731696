#include "platform/base/Strings.h"

#include "platform/base/CLocale.h"

#include <utf8.h>
#include <utf8proc.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <iterator>
#include <system_error>

namespace cutroom {

static_assert(sizeof(wchar_t) == 4, "wide text holds one scalar value in each character");

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isScalarValue(wchar_t c) noexcept {
    const auto value = static_cast<char32_t>(c);
    return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

// Most text is, and then nothing is to be decoded.
template <class C> bool isAscii(std::basic_string_view<C> text) noexcept {
    C bits = 0;
    for (const C c : text)
        bits = static_cast<C>(bits | c);
    return bits >= 0 && bits < 0x80;
}

std::wstring decodeValid(std::string_view utf8) {
    std::wstring wide;
    wide.reserve(utf8.size());
    utf8::unchecked::utf8to32(utf8.begin(), utf8.end(), std::back_inserter(wide));
    return wide;
}

utf8proc_category_t category(wchar_t c) noexcept {
    return utf8proc_category(static_cast<utf8proc_int32_t>(c));
}

// Lower-cases what is well-formed and passes every other byte on.
void appendLower(std::string& out, std::string_view text) {
    while (!text.empty()) {
        utf8proc_int32_t c = -1;
        const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                             static_cast<utf8proc_ssize_t>(text.size()), &c);
        if (length <= 0) {
            out += text.front();
            text.remove_prefix(1);
        } else {
            utf8::unchecked::append(static_cast<char32_t>(utf8proc_tolower(c)),
                                    std::back_inserter(out));
            text.remove_prefix(static_cast<std::size_t>(length));
        }
    }
}

template <class Number> std::optional<Number> parseWhole(std::string_view text) noexcept {
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

template <class Number> std::string numberText(Number value) {
    char digits[40];
    return {digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr};
}

} // namespace

std::optional<std::wstring> toWideStrict(std::string_view utf8) {
    if (!isUtf8(utf8))
        return std::nullopt;
    return decodeValid(utf8);
}

std::optional<std::string> toUtf8Strict(std::wstring_view wide) {
    if (!std::all_of(wide.begin(), wide.end(), isScalarValue))
        return std::nullopt;
    return toUtf8(wide);
}

std::wstring toWide(std::string_view utf8) {
    if (isAscii(utf8))
        return {utf8.begin(), utf8.end()};
    if (isUtf8(utf8))
        return decodeValid(utf8);
    std::string repaired;
    utf8::replace_invalid(utf8.begin(), utf8.end(), std::back_inserter(repaired), kReplacement);
    return decodeValid(repaired);
}

std::string toUtf8(std::wstring_view wide) {
    std::string narrow;
    if (isAscii(wide)) {
        narrow.resize(wide.size());
        std::transform(wide.begin(), wide.end(), narrow.begin(),
                       [](wchar_t c) { return static_cast<char>(c); });
        return narrow;
    }
    narrow.reserve(wide.size());
    for (const wchar_t c : wide)
        utf8::unchecked::append(isScalarValue(c) ? static_cast<char32_t>(c) : kReplacement,
                                std::back_inserter(narrow));
    return narrow;
}

bool isUtf8(std::string_view text) noexcept {
    return isAscii(text) || utf8::is_valid(text.begin(), text.end());
}

wchar_t toLowerChar(wchar_t c) noexcept {
    return static_cast<wchar_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(c)));
}

std::wstring toLower(std::wstring_view text) {
    std::wstring lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), toLowerChar);
    return lower;
}

std::string toLowerUtf8(std::string_view text) {
    std::string lower;
    lower.reserve(text.size());
    appendLower(lower, text);
    return lower;
}

bool isPunctuation(wchar_t c) noexcept {
    const utf8proc_category_t kind = category(c);
    return kind >= UTF8PROC_CATEGORY_PC && kind <= UTF8PROC_CATEGORY_SO;
}

bool isWhiteSpace(wchar_t c) noexcept {
    if ((c >= 0x09 && c <= 0x0D) || c == 0x85)
        return true;
    const utf8proc_category_t kind = category(c);
    return kind >= UTF8PROC_CATEGORY_ZS && kind <= UTF8PROC_CATEGORY_ZP;
}

int displayWidth(wchar_t c) noexcept {
    return std::clamp(utf8proc_charwidth(static_cast<utf8proc_int32_t>(c)), 0, 2);
}

bool equalNoCase(std::string_view a, std::string_view b) {
    return a == b || toLowerUtf8(a) == toLowerUtf8(b);
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (std::size_t end = text.find(separator); end != std::string_view::npos;
         end = text.find(separator)) {
        pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    pieces.emplace_back(text);
    return pieces;
}

std::string join(const std::vector<std::string>& pieces, std::string_view separator) {
    std::string text;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i != 0)
            text += separator;
        text += pieces[i];
    }
    return text;
}

std::string_view trim(std::string_view text) noexcept {
    constexpr std::string_view kBlanks = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string toText(double value) { return std::isnan(value) ? "nan" : numberText(value); }
std::string toText(long long value) { return numberText(value); }
std::string toText(unsigned long long value) { return numberText(value); }

void appendNumber(std::string& out, std::int64_t value, std::ptrdiff_t digits) {
    char text[20];
    char* const end = std::end(text);
    char* begin = end;
    for (; value != 0 || end - begin < digits; value /= 10)
        *--begin = static_cast<char>('0' + value % 10);
    out.append(begin, end);
}

std::optional<double> parseDouble(std::string_view text) noexcept {
    // The library reads other spellings of these as well; we read what we write.
    const bool named = text.find_first_of("nN") != std::string_view::npos;
    if (named && text != "inf" && text != "-inf" && text != "nan")
        return std::nullopt;
    return parseWhole<double>(text);
}
std::optional<long long> parseInt(std::string_view text) noexcept {
    return parseWhole<long long>(text);
}
std::optional<unsigned long long> parseUnsigned(std::string_view text) noexcept {
    return parseWhole<unsigned long long>(text);
}

int leadingInt(std::string_view text) noexcept {
    if (text.starts_with('+') && !text.substr(1).starts_with('-'))
        text.remove_prefix(1);
    int value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range)
        return text.front() == '-' ? INT_MIN : INT_MAX;
    return value;
}

std::string format(const char* pattern, ...) {
    va_list args;
    va_start(args, pattern);
    va_list again;
    va_copy(again, args);
    const int length = formatInC(nullptr, 0, pattern, args);
    va_end(args);
    std::string text;
    if (length > 0) {
        text.resize(static_cast<std::size_t>(length) + 1);
        formatInC(text.data(), text.size(), pattern, again);
        text.pop_back();
    }
    va_end(again);
    return text;
}

} // namespace cutroom
