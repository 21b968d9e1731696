// `Cookie`: identifier of a project asset.
#pragma once

#include "platform/base/Export.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The kind letter of a cookie: 'E' an edit or log, 'I' the invalid cookie, 'V' a video strip, 'S' a
// sound strip, 'G' a bin, 'M' a sync group, 'D' and 'A' documents, 'P' a project, 'X' an effect.
using CookieType = char;

// A kind letter, 64 bits of identity and a strip index (255: none). 16 bytes, trivially copyable,
// totally ordered. A value: any thread, no lock.
class CUTROOM_API Cookie {
public:
    static constexpr CookieType kInvalidType = 'I';
    static constexpr std::uint8_t kNoIndex = 255;

    // The invalid cookie.
    constexpr Cookie() noexcept = default;
    // The identity `id` of kind `type`; the invalid cookie for kind 'I' and for what is not an
    // upper-case ASCII letter.
    constexpr Cookie(CookieType type, std::uint64_t id, std::uint8_t index = kNoIndex) noexcept {
        if (isKind(type) && type != kInvalidType) {
            id_ = id;
            type_ = type;
            index_ = index;
        }
    }
    // What `fromString` reads; the invalid cookie when it reads nothing.
    explicit Cookie(std::string_view text) noexcept;

    // A fresh cookie of kind `type` (from the installed id source).
    static Cookie make(CookieType type);

    // False exactly for kind 'I'.
    constexpr bool valid() const noexcept { return type_ != kInvalidType; }
    constexpr CookieType type() const noexcept { return type_; }
    constexpr CookieType getType() const noexcept { return type_; }
    constexpr std::uint64_t id() const noexcept { return id_; }
    constexpr std::uint8_t index() const noexcept { return index_; }

    // Kind letter and 13 digits of Crockford's base 32 in upper case; a strip index follows after a
    // point, in decimal: "E0A1B2C3D4E5F6", "V0A1B2C3D4E5F6.2". The invalid cookie is "I". With
    // `full` false the index is left out.
    std::string asString(bool full = true) const;
    std::wstring asWString(bool full = true) const;
    // Reads what `asString(true)` writes; every other text gives nothing, so no text read as a
    // cookie can name a path outside a folder.
    static std::optional<Cookie> fromString(std::string_view text) noexcept;

    // Negative, 0 or positive: by kind, then identity, then index.
    static int compare(const Cookie& a, const Cookie& b) noexcept;

    friend constexpr bool operator==(const Cookie&, const Cookie&) noexcept = default;
    friend bool operator<(const Cookie& a, const Cookie& b) noexcept { return compare(a, b) < 0; }

private:
    static constexpr bool isKind(char c) noexcept { return c >= 'A' && c <= 'Z'; }

    std::uint64_t id_ = 0;
    CookieType type_ = kInvalidType;
    std::uint8_t index_ = kNoIndex;
};

using CookieVec = std::vector<Cookie>;

// The same identity as a cookie of kind `type` with strip `index`; the invalid cookie stays itself.
CUTROOM_API Cookie convertCookie(const Cookie& cookie, CookieType type,
                                 std::uint8_t index = Cookie::kNoIndex) noexcept;

template <> struct std::hash<Cookie> {
    std::size_t operator()(const Cookie& cookie) const noexcept {
        std::uint64_t mixed = cookie.id() ^
                              (std::uint64_t{static_cast<unsigned char>(cookie.type())} << 56) ^
                              cookie.index();
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ull;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBull;
        return static_cast<std::size_t>(mixed ^ (mixed >> 31));
    }
};
