#include "platform/base/IdStamp.h"

#include "platform/base/IdSource.h"

#include <charconv>
#include <iterator>
#include <system_error>

namespace {

void appendHex(std::string& text, std::uint32_t part) {
    char digits[8];
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), part, 16).ptr);
}

// One part without leading zeros, in lower case.
std::optional<std::uint32_t> parseHex(std::string_view text) noexcept {
    if (text.empty() || text.size() > 8 || (text.front() == '0' && text.size() > 1) ||
        text.find_first_not_of("0123456789abcdef") != std::string_view::npos)
        return std::nullopt;
    std::uint32_t part = 0;
    std::from_chars(text.data(), text.data() + text.size(), part, 16);
    return part;
}

} // namespace

IdStamp IdStamp::make() {
    cutroom::iIdSource& source = cutroom::idSource();
    const std::uint64_t bits = source.nextId();
    const IdStamp id(static_cast<std::uint32_t>(bits >> 32), source.secondsNow(),
                     static_cast<std::uint32_t>(bits));
    return id.valid() ? id : make();
}

std::string IdStamp::asString() const {
    std::string text;
    appendHex(text, origin_);
    text += '.';
    appendHex(text, time_);
    text += '.';
    appendHex(text, ticks_);
    return text;
}

std::optional<IdStamp> IdStamp::fromString(std::string_view text) noexcept {
    const std::size_t first = text.find('.');
    const std::size_t second = first == std::string_view::npos ? first : text.find('.', first + 1);
    if (second == std::string_view::npos)
        return std::nullopt;
    const auto origin = parseHex(text.substr(0, first));
    const auto time = parseHex(text.substr(first + 1, second - first - 1));
    const auto ticks = parseHex(text.substr(second + 1));
    if (!origin || !time || !ticks)
        return std::nullopt;
    return IdStamp(*origin, *time, *ticks);
}
