// `cutroom::CookieTable`: slot numbers by cookie, made for quick answers among a million.
#pragma once

#include "platform/base/Cookie.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace cutroom {

// An open-addressed table; about 32 bytes a cookie. Identities lie apart from all else, so that the
// question whether a cookie is there walks through 8 bytes a cell as long as all are of one kind.
// One thread at a time.
class CookieTable {
public:
    using Slot = std::uint32_t; // all but the highest

    std::size_t size() const noexcept { return size_; }
    std::optional<Slot> find(const Cookie& cookie) const noexcept {
        const std::size_t at = placeOf(cookie);
        return at == kNone ? std::nullopt : std::optional<Slot>(rest_[at].next - 1);
    }
    bool contains(const Cookie& cookie) const noexcept { return placeOf(cookie) != kNone; }
    // Tells of each cookie whether it is there and stands in the list for the first time.
    std::vector<bool> firstOfEach(const CookieVec& cookies) const;
    // Brings the place of a cookie near, for a look soon to come.
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

    // What a cell holds beside the identity.
    struct Rest {
        Slot next = 0; // the slot and 1; 0: free
        CookieType type = Cookie::kInvalidType;
        std::uint8_t index = 0;
    };

    std::size_t mask() const noexcept { return ids_.size() - 1; }
    // The upper bits of a product, where every bit of the identity counts.
    std::size_t homeOf(std::uint64_t id) const noexcept {
        return static_cast<std::size_t>((id ^ (id >> 32)) * 0x9E3779B97F4A7C15ull >> shift_);
    }
    bool isFree(std::size_t at) const noexcept { return ids_[at] == 0 && rest_[at].next == 0; }
    bool isOfKind(std::size_t at, const Cookie& cookie) const noexcept {
        return rest_[at].type == cookie.type() && rest_[at].index == cookie.index();
    }
    // Where the cookie is; kNone without it.
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
    Cookie kind_;         // the first cookie; all that came since are of its kind and index
    bool oneKind_ = true; // while this holds
};

} // namespace cutroom
