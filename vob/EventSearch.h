// `EventSearch`: the event nearest to a time, before or after it, among those offered.
#pragma once

#include "platform/store/EditReader.h"

#include <optional>
#include <vector>

namespace cutroom {

// Made on the stack for one search. Times in seconds. Events closer to the start than the tolerance
// of times do not count.
//
//     ---|----t===|-----|---      forward: the first bar after t that is not within the tolerance
class EventSearch {
public:
    enum Direction { kForward, kBackward };

    // `from` is a number, and may be infinite. Cuts, and what belongs to them, count only beyond
    // `cutsFrom` as well.
    EventSearch(Direction direction, double from, double cutsFrom) noexcept;

    void offer(double seconds) noexcept;
    // The cuts of a channel. `hint`: see EditReader.
    void offerCuts(const EditReader& edit, std::size_t channel, std::size_t& hint) noexcept;
    // The middles of the transitions over them. A middle lies at most in the neighbour of its cut,
    // so that only the two around the start need be looked at.
    void offerMidPoints(const EditReader& edit, std::size_t channel) noexcept;
    // Ascending times, of which only those count that lie at least `step` beyond the start.
    void offerSorted(const std::vector<double>& times, double step) noexcept;

    // The nearest event offered; `otherwise` when there was none.
    double nearest(double otherwise) noexcept;

private:
    bool forward() const noexcept { return direction_ == kForward; }
    void offerCut(Flicks time) noexcept;
    void offerMidPoint(const EditReader& edit, const Cel& cel, std::uint32_t event) noexcept;

    const Direction direction_;
    const double limit_;    // events lie strictly beyond it
    const Flicks cutLimit_; // and cuts beyond this
    double nearest_;
    std::optional<Flicks> nearestCut_;
};

} // namespace cutroom
