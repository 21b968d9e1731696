#include "platform/files/JsonDocument.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace JSON::detail {

namespace {

constexpr double kExactIntegers = 9007199254740992.0; // 2^53

// The bare words for numbers that JSON lacks.
std::optional<double> wordValue(std::string_view text) noexcept {
    const bool negative = text.starts_with('-');
    if (negative)
        text.remove_prefix(1);
    if (text == "NaN" || text == "nan")
        return std::numeric_limits<double>::quiet_NaN();
    if (text == "Infinity" || text == "Inf" || text == "inf")
        return negative ? -std::numeric_limits<double>::infinity()
                        : std::numeric_limits<double>::infinity();
    return std::nullopt;
}

// Integers that are written with a point or an exponent.
std::optional<double> wholeValue(std::string_view text) noexcept {
    if (text.find_first_of(".eE") == std::string_view::npos)
        return std::nullopt;
    const std::optional<double> value = cutroom::parseDouble(text);
    if (!value || std::fabs(*value) >= kExactIntegers || std::trunc(*value) != *value)
        return std::nullopt;
    return value;
}

} // namespace

bool hasChildren(Kind kind) noexcept { return kind == Kind::array || kind == Kind::object; }

std::string_view Document::text(const Node& node) const noexcept {
    switch (node.kind) {
    case Kind::null:
        return "null";
    case Kind::boolean:
        return node.size ? "true" : "false";
    case Kind::number:
    case Kind::string:
        return std::string_view(texts).substr(node.value, node.size);
    default:
        return {};
    }
}

std::uint32_t Document::find(std::uint32_t object, std::string_view wanted) const noexcept {
    const Node& node = nodes[object];
    if (node.kind != Kind::object)
        return 0;
    if (node.value == kNoPlaces) {
        std::uint32_t found = 0;
        for (std::uint32_t at = object + 1; at < node.next; at = nodes[at].next)
            if (key(nodes[at]) == wanted)
                found = at;
        return found;
    }
    const auto first = places.begin() + node.value;
    const auto after = std::upper_bound(
        first, first + node.size, wanted,
        [&](std::string_view text, std::uint32_t at) { return text < key(nodes[at]); });
    return after != first && key(nodes[*(after - 1)]) == wanted ? *(after - 1) : 0;
}

std::uint32_t Document::child(std::uint32_t parent, std::uint64_t index) const noexcept {
    const Node& node = nodes[parent];
    if (!hasChildren(node.kind) || index >= node.size)
        return 0;
    if (node.kind == Kind::array && node.value != kNoPlaces)
        return places[node.value + static_cast<std::uint32_t>(index)];
    std::uint32_t at = parent + 1;
    for (; index > 0; --index)
        at = nodes[at].next;
    return at;
}

void Document::index(std::uint32_t parent) {
    Node& node = nodes[parent];
    node.value = kNoPlaces;
    if (node.size < kIndexedFrom)
        return;
    node.value = static_cast<std::uint32_t>(places.size());
    for (std::uint32_t at = parent + 1; at < nodes.size(); at = nodes[at].next)
        places.push_back(at);
    if (node.kind == Kind::object)
        std::sort(places.begin() + node.value, places.end(), [&](std::uint32_t a, std::uint32_t b) {
            const int order = key(nodes[a]).compare(key(nodes[b]));
            return order < 0 || (order == 0 && a < b);
        });
}

std::optional<double> asDouble(Kind kind, std::string_view text) noexcept {
    if (kind != Kind::number)
        return std::nullopt;
    if (const std::optional<double> word = wordValue(text))
        return word;
    return cutroom::parseDouble(text);
}

std::optional<std::int64_t> asInt(Kind kind, std::string_view text) noexcept {
    if (kind != Kind::number)
        return std::nullopt;
    if (const std::optional<long long> whole = cutroom::parseInt(text))
        return *whole;
    const std::optional<double> value = wholeValue(text);
    return value ? std::optional(static_cast<std::int64_t>(*value)) : std::nullopt;
}

std::optional<std::uint64_t> asUnsigned(Kind kind, std::string_view text) noexcept {
    if (kind != Kind::number)
        return std::nullopt;
    if (const std::optional<unsigned long long> whole = cutroom::parseUnsigned(text))
        return *whole;
    const std::optional<double> value = wholeValue(text);
    return value && *value >= 0 ? std::optional(static_cast<std::uint64_t>(*value)) : std::nullopt;
}

} // namespace JSON::detail
