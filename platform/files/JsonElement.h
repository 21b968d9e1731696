// JSON (RFC 8259) as a read-only tree. Members keep their order, numbers their text.
//
// One parse makes one compact document; an `Element` is a small counted view of a place in it and
// keeps the document alive. Elements are immutable: any thread, no lock.
#pragma once

#include "platform/base/Ptr.h"
#include "platform/base/Status.h"
#include "platform/base/Strings.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace JSON {

enum class Kind : std::uint8_t { null, boolean, number, string, array, object };

// What a reader accepts.
struct ReadOptions {
    int maxDepth = 64; // arrays and objects inside one another
    std::uint64_t maxBytes = std::uint64_t{1} << 30;
    std::uint64_t maxElements = 100'000'000; // values in all
    // For files of other programs: a byte order mark, and the bare words NaN, Infinity, Inf and
    // inf, nan (also with "-") as numbers that keep their text.
    bool tolerant = false;
};

namespace detail {
struct Document;
}

class CUTROOM_API Element final : public Kv::InternalRefCount {
public:
    // Reads one JSON text; `file` is for the failure, which is `damaged` with line and, in its
    // message, the column.
    static cutroom::Result<Kv::Ptr<Element>> parse(std::string_view text, const std::string& file,
                                                   const ReadOptions& options = {});
    // Reads a file.
    static cutroom::Result<Kv::Ptr<Element>> load(const std::string& path,
                                                  const ReadOptions& options = {});
    ~Element() override;

    Kind kind() const noexcept;
    bool isObject() const noexcept { return kind() == Kind::object; }
    bool isArray() const noexcept { return kind() == Kind::array; }
    bool isString() const noexcept { return kind() == Kind::string; }
    bool isNumber() const noexcept { return kind() == Kind::number; }
    // The key under which it stands in its object; empty for an unnamed one. Views live as long as
    // any element of the document.
    std::string_view key() const noexcept;

    // Children of an array or object, in order; none for other kinds.
    std::size_t size() const noexcept;
    Kv::Ptr<Element>
    child(std::size_t index) const; // empty beyond the end; constant time in arrays
    std::vector<Kv::Ptr<Element>> children() const;
    // The member under `key`, the last one where a key stands twice; empty when there is none or
    // this is no object. Logarithmic.
    Kv::Ptr<Element> find(std::string_view key) const;
    bool has(std::string_view key) const;

    // The value itself: the text of a string, the characters of a number, "true" and "false",
    // "null"; empty for arrays and objects.
    std::string_view text() const noexcept;
    // Nothing when it is no number or the number does not fit. A number with a point or exponent is
    // no integer, save when its value is whole and below 2^53. Bare words read as NaN, infinities.
    std::optional<double> asDouble() const noexcept;
    std::optional<std::int64_t> asInt() const noexcept;
    std::optional<std::uint64_t> asUnsigned() const noexcept;
    std::optional<bool> asBool() const noexcept;

    // Members by key, with what is given when the key is missing or of another kind.
    std::string getString(std::string_view key, std::string_view otherwise = {}) const;
    LightweightString<wchar_t> getWString(std::string_view key,
                                          std::wstring_view otherwise = {}) const;
    double getDouble(std::string_view key, double otherwise = 0) const;
    std::int64_t getInt(std::string_view key, std::int64_t otherwise = 0) const;
    std::uint64_t getUnsigned(std::string_view key, std::uint64_t otherwise = 0) const;
    bool getBool(std::string_view key, bool otherwise = false) const;

private:
    friend class Cursor;
    Element(std::shared_ptr<const detail::Document> document, std::uint32_t node);

    std::shared_ptr<const detail::Document> document_;
    std::uint32_t node_;
};

// Walks children without making an element for each: what large arrays are read with.
//
//     for (JSON::Cursor item = JSON::Cursor::childrenOf(*list); item; item.next())
//         use(item.getDouble("start"));
//
// Holds no share: the element it came from must outlive it. A value.
class CUTROOM_API Cursor {
public:
    // At no place.
    Cursor() noexcept = default;
    // At the element itself.
    static Cursor at(const Element& element) noexcept;
    // At the first child of `parent`; at no place when it has none.
    static Cursor childrenOf(const Element& parent) noexcept;
    static Cursor childrenOf(const Cursor& parent) noexcept;

    // False past the last child.
    explicit operator bool() const noexcept { return document_ != nullptr; }
    void next() noexcept;

    // As in `Element`; only while true.
    Kind kind() const noexcept;
    std::string_view key() const noexcept;
    std::string_view text() const noexcept;
    std::size_t size() const noexcept;
    Cursor find(std::string_view key) const noexcept;
    std::optional<double> asDouble() const noexcept;
    std::optional<std::int64_t> asInt() const noexcept;
    std::string_view getText(std::string_view key, std::string_view otherwise = {}) const noexcept;
    double getDouble(std::string_view key, double otherwise = 0) const noexcept;
    std::int64_t getInt(std::string_view key, std::int64_t otherwise = 0) const noexcept;
    bool getBool(std::string_view key, bool otherwise = false) const noexcept;
    // The same place, counted, for keeping.
    Kv::Ptr<Element> element(const Element& root) const;

private:
    Cursor(const detail::Document* document, std::uint32_t node, std::uint32_t end) noexcept
        : document_(document), node_(node), end_(end) {}

    const detail::Document* document_ = nullptr;
    std::uint32_t node_ = 0;
    std::uint32_t end_ = 0; // one past the last node of the parent
};

} // namespace JSON
