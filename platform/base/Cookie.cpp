#include "platform/base/Cookie.h"

#include "platform/base/IdSource.h"

#include <charconv>
#include <compare>
#include <system_error>
#include <tuple>

namespace {

// Crockford's base 32: no I, L, O and U.
constexpr std::string_view kDigits = "0123456789ABCDEFGHJKMNPQRSTVWXYZ";
constexpr std::size_t kIdLength = 13; // 65 bits for 64: the first digit is below 16

std::optional<std::uint64_t> parseId(std::string_view text) noexcept {
    std::uint64_t id = 0;
    for (const char c : text) {
        const std::size_t digit = kDigits.find(c);
        if (digit == std::string_view::npos || id >> 59)
            return std::nullopt;
        id = (id << 5) | digit;
    }
    return id;
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
    const auto id = parseId(text.substr(1, kIdLength));
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
