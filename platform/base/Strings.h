// The string and vector types at every interface, and the one place where text changes form.
//
// Narrow text is UTF-8, wide text is `wchar_t` holding one Unicode scalar value each. All
// operations are free of locale and may run on any thread.
#pragma once

#include "platform/base/Export.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

template <class C> using LightweightString = std::basic_string<C>;
template <class T> using LightweightVector = std::vector<T>;

namespace cutroom {

// Strict conversions: nothing where the input holds an ill-formed sequence, a surrogate or a value
// above U+10FFFF.
CUTROOM_API std::optional<std::wstring> toWideStrict(std::string_view utf8);
CUTROOM_API std::optional<std::string> toUtf8Strict(std::wstring_view wide);

// Conversions for text that is shown or compared: what is ill-formed becomes U+FFFD, so the reader
// can see that something was there.
CUTROOM_API std::wstring toWide(std::string_view utf8);
CUTROOM_API std::string toUtf8(std::wstring_view wide);

// Tells whether `text` is well-formed UTF-8.
CUTROOM_API bool isUtf8(std::string_view text) noexcept;

// Simple lower-casing of each character by the Unicode tables (one to one, no folding).
CUTROOM_API std::wstring toLower(std::wstring_view text);
// Bytes that are not well-formed pass unchanged.
CUTROOM_API std::string toLowerUtf8(std::string_view text);
CUTROOM_API wchar_t toLowerChar(wchar_t c) noexcept;
// Character classes by the Unicode tables: punctuation and symbols (categories P and S), and the
// White_Space property.
CUTROOM_API bool isPunctuation(wchar_t c) noexcept;
CUTROOM_API bool isWhiteSpace(wchar_t c) noexcept;
// Columns that a character takes on a terminal: 0, 1 or 2.
CUTROOM_API int displayWidth(wchar_t c) noexcept;

// Case-blind equality (simple lower-casing of both sides).
CUTROOM_API bool equalNoCase(std::string_view a, std::string_view b);

// Splits at every `separator`; n separators give n + 1 pieces, the empty text one empty piece.
CUTROOM_API std::vector<std::string> split(std::string_view text, char separator);
CUTROOM_API std::string join(const std::vector<std::string>& pieces, std::string_view separator);
// Without leading and trailing ASCII white space.
CUTROOM_API std::string_view trim(std::string_view text) noexcept;

// Numbers as persisted text, the same bytes in every locale. `toText(double)` is the shortest form
// that reads back exactly; infinities and NaN are written as "inf", "-inf", "nan".
CUTROOM_API std::string toText(double value);
CUTROOM_API std::string toText(long long value);
CUTROOM_API std::string toText(unsigned long long value);
// Appends a number that is not negative, in at least `digits` digits (up to 20).
CUTROOM_API void appendNumber(std::string& out, std::int64_t value, std::ptrdiff_t digits = 1);
// Whole-text reads: nothing when a character is left over or the value does not fit.
CUTROOM_API std::optional<double> parseDouble(std::string_view text) noexcept;
CUTROOM_API std::optional<long long> parseInt(std::string_view text) noexcept;
CUTROOM_API std::optional<unsigned long long> parseUnsigned(std::string_view text) noexcept;
// Plain decimal conversion: the leading (signed) digits, 0 for none, held at the limits of int.
CUTROOM_API int leadingInt(std::string_view text) noexcept;

// printf-style formatting into a string; the numeric part follows the "C" locale.
CUTROOM_API std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

} // namespace cutroom
