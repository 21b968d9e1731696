// `cutroom::CookieTable`: slot numbers by cookie, made for quick answers among a million.
#pragma once

#include "platform/base/Cookie.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace cutroom {

// An open-addressed table; about 48 bytes a cookie. One thread at a time.
class CookieTable {
public:
    using Slot = std::uint32_t;

    std::size_t size() const noexcept { return size_; }
    std::optional<Slot> find(const Cookie& cookie) const noexcept {
        if (size_ == 0)
            return std::nullopt;
        for (std::size_t at = homeOf(cookie);; at = next(at)) {
            if (!cells_[at].used)
                return std::nullopt;
            if (cells_[at].cookie == cookie)
                return cells_[at].slot;
        }
    }
    // Brings the place of a cookie near, for a `find` soon to come.
    void prefetch(const Cookie& cookie) const noexcept {
        if (size_ != 0)
            __builtin_prefetch(&cells_[homeOf(cookie)]);
    }
    // Adds a cookie that is not there.
    void insert(const Cookie& cookie, Slot slot);
    // Takes out a cookie, if it is there.
    void erase(const Cookie& cookie) noexcept;
    void reserve(std::size_t cookies);
    void clear() noexcept;

private:
    struct Cell {
        Cookie cookie;
        Slot slot = 0;
        bool used = false;
    };
    std::size_t homeOf(const Cookie& cookie) const noexcept {
        return std::hash<Cookie>()(cookie) & (cells_.size() - 1);
    }
    std::size_t next(std::size_t at) const noexcept { return (at + 1) & (cells_.size() - 1); }
    void grow(std::size_t cells);

    std::vector<Cell> cells_; // none, or a power of two, at most half of them used
    std::size_t size_ = 0;
};

} // namespace cutroom
