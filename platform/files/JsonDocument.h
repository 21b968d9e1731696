// What one parse of a JSON text makes: all values in one list, all texts in one string. Internal to
// this folder.
#pragma once

#include "platform/files/JsonElement.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace JSON::detail {

// Values stand in the order of the text, so the children of one follow it; `next` jumps over them.
struct Node {
    std::uint32_t key = 0; // in texts, with its length
    std::uint32_t keySize = 0;
    // String, number: in texts. Array, object: where its places begin in Document::places.
    std::uint32_t value = 0;
    std::uint32_t size = 0; // of the text; number of children; 1 for true
    std::uint32_t next = 0; // the first value after this one and all below it
    Kind kind = Kind::null;
};

inline constexpr std::uint32_t kNoPlaces = 0xFFFFFFFFu;
// Smaller arrays and objects are walked.
inline constexpr std::uint32_t kIndexedFrom = 16;

struct Document {
    // Lists in pieces: growing them never needs the old and the new one at once.
    std::deque<Node> nodes;
    std::deque<std::uint32_t> places; // children: of arrays in order, of objects sorted by key
    std::string texts;

    std::string_view key(const Node& node) const noexcept {
        return std::string_view(texts).substr(node.key, node.keySize);
    }
    std::string_view text(const Node& node) const noexcept;
    // 0, which is never a child, when there is none.
    std::uint32_t find(std::uint32_t object, std::string_view key) const noexcept;
    std::uint32_t child(std::uint32_t parent, std::uint64_t index) const noexcept;
    // Fills in the places of a finished array or object.
    void index(std::uint32_t parent);
};

bool hasChildren(Kind kind) noexcept;
std::optional<double> asDouble(Kind kind, std::string_view text) noexcept;
std::optional<std::int64_t> asInt(Kind kind, std::string_view text) noexcept;
std::optional<std::uint64_t> asUnsigned(Kind kind, std::string_view text) noexcept;

} // namespace JSON::detail
