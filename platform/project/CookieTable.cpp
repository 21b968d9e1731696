#include "platform/project/CookieTable.h"

#include <algorithm>
#include <bit>
#include <unordered_set>
#include <utility>

namespace cutroom {

namespace {

constexpr std::size_t kLeastCells = 16;
// How many lookups ahead cells are prefetched: about as many as memory loads at a time.
constexpr std::size_t kLookAhead = 24;

// The cells that were met: a bit for each cell when many cookies are looked up, else a set.
class CellsMet {
public:
    CellsMet(std::size_t cells, std::size_t cookies)
        : bits_(cookies >= cells / kCellsPerCookie ? (cells + 63) / 64 : 0) {}

    // False when it has been met before.
    bool meet(std::size_t cell) {
        if (bits_.empty())
            return few_.insert(cell).second;
        const std::uint64_t bit = std::uint64_t{1} << (cell % 64);
        return (std::exchange(bits_[cell / 64], bits_[cell / 64] | bit) & bit) == 0;
    }

private:
    static constexpr std::size_t kCellsPerCookie = 512;

    std::vector<std::uint64_t> bits_;
    std::unordered_set<std::size_t> few_;
};

} // namespace

std::vector<bool> CookieTable::firstOfEach(const CookieVec& cookies) const {
    std::vector<bool> answers(cookies.size());
    if (size_ == 0)
        return answers;
    CellsMet met(ids_.size(), cookies.size());
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        if (i + kLookAhead < cookies.size())
            prefetch(cookies[i + kLookAhead]);
        const std::size_t at = placeOf(cookies[i]);
        if (at != kNone && met.meet(at))
            answers[i] = true;
    }
    return answers;
}

// Puts a cookie that is not there into the first free cell.
void CookieTable::put(std::uint64_t id, const Rest& rest) noexcept {
    std::size_t at = homeOf(id);
    while (!isFree(at))
        at = (at + 1) & mask();
    ids_[at] = id;
    rest_[at] = rest;
}

void CookieTable::grow(std::size_t cells) {
    std::vector<std::uint64_t> ids(cells);
    std::vector<Rest> rest(cells);
    ids.swap(ids_);
    rest.swap(rest_);
    shift_ = 64u - static_cast<unsigned>(std::countr_zero(cells));
    for (std::size_t i = 0; i < ids.size(); ++i)
        if (rest[i].next != 0)
            put(ids[i], rest[i]);
}

void CookieTable::reserve(std::size_t cookies) {
    const std::size_t wanted = std::bit_ceil(std::max(kLeastCells, cookies * 2));
    if (wanted > ids_.size())
        grow(wanted);
}

void CookieTable::insert(const Cookie& cookie, Slot slot) {
    reserve(size_ + 1);
    if (size_ == 0) {
        kind_ = cookie;
        oneKind_ = true;
    }
    oneKind_ = oneKind_ && cookie.type() == kind_.type() && cookie.index() == kind_.index();
    put(cookie.id(), {slot + 1, cookie.type(), cookie.index()});
    ++size_;
}

// Moves later cells of the run back, so that no search ends at the gap.
void CookieTable::erase(const Cookie& cookie) noexcept {
    std::size_t gap = placeOf(cookie);
    if (gap == kNone)
        return;
    for (std::size_t at = (gap + 1) & mask(); !isFree(at); at = (at + 1) & mask()) {
        if (((at - homeOf(ids_[at])) & mask()) < ((at - gap) & mask()))
            continue;
        ids_[gap] = ids_[at];
        rest_[gap] = rest_[at];
        gap = at;
    }
    ids_[gap] = 0;
    rest_[gap] = Rest();
    --size_;
}

void CookieTable::clear() noexcept {
    ids_.clear();
    rest_.clear();
    size_ = 0;
}

} // namespace cutroom
