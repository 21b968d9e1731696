#include "platform/project/CookieTable.h"

#include <bit>
#include <utility>

namespace cutroom {

namespace {
constexpr std::size_t kLeastCells = 16;
}

void CookieTable::grow(std::size_t cells) {
    std::vector<Cell> old(cells);
    old.swap(cells_);
    size_ = 0;
    for (const Cell& cell : old)
        if (cell.used)
            insert(cell.cookie, cell.slot);
}

void CookieTable::reserve(std::size_t cookies) {
    const std::size_t wanted = std::bit_ceil(std::max(kLeastCells, cookies * 2));
    if (wanted > cells_.size())
        grow(wanted);
}

void CookieTable::insert(const Cookie& cookie, Slot slot) {
    reserve(size_ + 1);
    std::size_t at = homeOf(cookie);
    while (cells_[at].used)
        at = next(at);
    cells_[at] = {cookie, slot, true};
    ++size_;
}

// Moves later cells of the run back, so that no search ends at the gap.
void CookieTable::erase(const Cookie& cookie) noexcept {
    if (!find(cookie))
        return;
    std::size_t gap = homeOf(cookie);
    while (!(cells_[gap].cookie == cookie))
        gap = next(gap);
    const std::size_t mask = cells_.size() - 1;
    for (std::size_t at = next(gap); cells_[at].used; at = next(at)) {
        const std::size_t distance = (at - homeOf(cells_[at].cookie)) & mask;
        if (distance >= ((at - gap) & mask)) {
            cells_[gap] = cells_[at];
            gap = at;
        }
    }
    cells_[gap] = Cell();
    --size_;
}

void CookieTable::clear() noexcept {
    cells_.clear();
    size_ = 0;
}

} // namespace cutroom
