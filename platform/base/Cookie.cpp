#include "platform/base/Cookie.h"

#include "platform/base/IdSource.h"

#include <array>
#include <charconv>
#include <compare>
#include <system_error>
#include <tuple>

namespace {

// Crockford's base 32: no I, L, O and U.
constexpr std::string_view kDigits = "0123456789ABCDEFGHJKMNPQRSTVWXYZ";
constexpr std::size_t kIdLength = 13; // 65 bits for 64: the first digit is below 16

// The value of each character as a digit; kNoDigit for all others.
constexpr std::uint8_t kNoDigit = 0xFF;
constexpr std::array<std::uint8_t, 256> kDigitValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (std::size_t i = 0; i < kDigits.size(); ++i)
        values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
    return values;
}();

// Of exactly kIdLength characters.
std::optional<std::uint64_t> parseId(const char* text) noexcept {
    const auto digit = [text](std::size_t place) {
        return std::uint64_t{kDigitValues[static_cast<unsigned char>(text[place])]};
    };
    // Two halves that do not wait for one another. A value above 31 (above 15 for the first digit)
    // shows in the bits that no digit has.
    constexpr std::size_t kHalf = kIdLength / 2;
    std::uint64_t high = digit(0), low = digit(kHalf);
    std::uint64_t all = (high << 1) | low;
    for (std::size_t place = 1; place < kHalf; ++place) {
        const std::uint64_t upper = digit(place), lower = digit(kHalf + place);
        high = (high << 5) | upper;
        low = (low << 5) | lower;
        all |= upper | lower;
    }
    const std::uint64_t last = digit(kIdLength - 1);
    all |= last;
    const std::uint64_t id = (high << 5 * (kHalf + 1)) | (low << 5) | last;
    return all < kDigits.size() ? std::optional<std::uint64_t>(id) : std::nullopt;
}

// A point and 0 to 254 without leading zeros; nothing at all is "no index".
std::optional<std::uint8_t> parseIndex(std::string_view text) noexcept {
    if (text.empty())
        return Cookie::kNoIndex;
    std::uint8_t index = Cookie::kNoIndex;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + 1, end, index);
    const bool padded = text.size() > 2 && text[1] == '0';
    if (text[0] != '.' || error != std::errc() || stop != end || padded ||
        index == Cookie::kNoIndex)
        return std::nullopt;
    return index;
}

} // namespace

Cookie::Cookie(std::string_view text) noexcept : Cookie(fromString(text).value_or(Cookie())) {}

Cookie Cookie::make(CookieType type) { return Cookie(type, cutroom::idSource().nextId()); }

std::string Cookie::asString(bool full) const {
    if (!valid())
        return std::string(1, kInvalidType);
    std::string text(1 + kIdLength, type_);
    std::uint64_t rest = id_;
    for (std::size_t place = kIdLength; place > 0; --place, rest >>= 5)
        text[place] = kDigits[rest & 31];
    if (full && index_ != kNoIndex)
        text += '.' + std::to_string(index_);
    return text;
}

std::wstring Cookie::asWString(bool full) const {
    const std::string text = asString(full);
    return {text.begin(), text.end()};
}

std::optional<Cookie> Cookie::fromString(std::string_view text) noexcept {
    if (text.size() == 1 && text[0] == kInvalidType)
        return Cookie();
    if (text.size() < 1 + kIdLength || text[0] == kInvalidType || !isKind(text[0]))
        return std::nullopt;
    const auto id = parseId(text.data() + 1);
    const auto index = parseIndex(text.substr(1 + kIdLength));
    if (!id || !index)
        return std::nullopt;
    return Cookie(text[0], *id, *index);
}

int Cookie::compare(const Cookie& a, const Cookie& b) noexcept {
    const auto order = std::tie(a.type_, a.id_, a.index_) <=> std::tie(b.type_, b.id_, b.index_);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

Cookie convertCookie(const Cookie& cookie, CookieType type, std::uint8_t index) noexcept {
    return cookie.valid() ? Cookie(type, cookie.id(), index) : Cookie();
}
