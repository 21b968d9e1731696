// `cutroom::CookieTable`: slot numbers by cookie, made for quick answers among a million.
#pragma once

#include "platform/base/Cookie.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace cutroom {

// An open-addressed table; about 32 bytes a cookie. Identities are kept apart from the rest, so
// that a lookup reads only 8 bytes a cell as long as all cookies are of one kind. One thread at a
// time.
class CookieTable {
public:
    using Slot = std::uint32_t; // all but the highest

    std::size_t size() const noexcept { return size_; }
    std::optional<Slot> find(const Cookie& cookie) const noexcept {
        const std::size_t at = placeOf(cookie);
        return at == kNone ? std::nullopt : std::optional<Slot>(rest_[at].next - 1);
    }
    bool contains(const Cookie& cookie) const noexcept { return placeOf(cookie) != kNone; }
    // For each cookie: whether it is in the table and did not come earlier in `cookies`.
    std::vector<bool> firstOfEach(const CookieVec& cookies) const;
    // Asks the processor to load the place of a cookie that will be looked up soon.
    void prefetch(const Cookie& cookie) const noexcept {
        if (size_ != 0)
            __builtin_prefetch(&ids_[homeOf(cookie.id())]);
    }
    // Adds a cookie that is not there.
    void insert(const Cookie& cookie, Slot slot);
    // Takes out a cookie, if it is there.
    void erase(const Cookie& cookie) noexcept;
    void reserve(std::size_t cookies);
    void clear() noexcept;

private:
    static constexpr std::size_t kNone = ~std::size_t{0};

    // What belongs to a cell beside the identity.
    struct Rest {
        Slot next = 0; // the slot plus 1; 0: the cell is free
        CookieType type = Cookie::kInvalidType;
        std::uint8_t index = 0;
    };

    std::size_t mask() const noexcept { return ids_.size() - 1; }
    // The cell at which the search for an identity begins: the upper bits of a product, on which
    // all bits of the identity have an effect.
    std::size_t homeOf(std::uint64_t id) const noexcept {
        return static_cast<std::size_t>((id ^ (id >> 32)) * 0x9E3779B97F4A7C15ull >> shift_);
    }
    bool isFree(std::size_t at) const noexcept { return ids_[at] == 0 && rest_[at].next == 0; }
    bool isOfKind(std::size_t at, const Cookie& cookie) const noexcept {
        return rest_[at].type == cookie.type() && rest_[at].index == cookie.index();
    }
    // The cell of the cookie; kNone when it is not there.
    std::size_t placeOf(const Cookie& cookie) const noexcept {
        if (size_ == 0 ||
            (oneKind_ && (cookie.type() != kind_.type() || cookie.index() != kind_.index())))
            return kNone;
        for (std::size_t at = homeOf(cookie.id());; at = (at + 1) & mask()) {
            if (isFree(at))
                return kNone;
            if (ids_[at] == cookie.id() && (oneKind_ || isOfKind(at, cookie)))
                return at;
        }
    }
    void put(std::uint64_t id, const Rest& rest) noexcept;
    void grow(std::size_t cells);

    std::vector<std::uint64_t> ids_; // none, or a power of two, at most half of them used
    std::vector<Rest> rest_;         // of each cell
    unsigned shift_ = 64;            // leaves as many bits of a product as number the cells
    std::size_t size_ = 0;
    Cookie kind_;         // the first cookie that was put in
    bool oneKind_ = true; // all cookies have the type and index of that one
};

} // namespace cutroom
