#include "vob/EventSearch.h"

#include <algorithm>
#include <cmath>

namespace cutroom {

namespace {

// No event lies here or further away.
constexpr double kSentinel = 1e12;

// A time in flicks, not yet whole; one far outside the store's range is held beside it.
double heldFlicks(double seconds) noexcept {
    constexpr double kFar = 2.0 * static_cast<double>(kMaxSeconds);
    return std::clamp(seconds, -kFar, kFar) * static_cast<double>(kFlicksPerSecond);
}
Flicks lastFlickUpTo(double seconds) noexcept {
    return static_cast<Flicks>(std::floor(heldFlicks(seconds)));
}
Flicks firstFlickFrom(double seconds) noexcept {
    return static_cast<Flicks>(std::ceil(heldFlicks(seconds)));
}

} // namespace

EventSearch::EventSearch(Direction direction, double from, double cutsFrom) noexcept
    : direction_(direction),
      limit_(direction == kForward ? from + kTimeTolerance : from - kTimeTolerance),
      cutLimit_(direction == kForward ? lastFlickUpTo(std::max(from, cutsFrom) + kTimeTolerance)
                                      : firstFlickFrom(std::min(from, cutsFrom) - kTimeTolerance)),
      nearest_(direction == kForward ? kSentinel : -kSentinel) {}

double EventSearch::nearest(double otherwise) noexcept {
    if (nearestCut_)
        offer(toSeconds(*nearestCut_));
    return nearest_ == (forward() ? kSentinel : -kSentinel) ? otherwise : nearest_;
}

void EventSearch::offer(double seconds) noexcept {
    if (forward() ? seconds > limit_ : seconds < limit_)
        nearest_ = forward() ? std::min(nearest_, seconds) : std::max(nearest_, seconds);
}

void EventSearch::offerCut(Flicks time) noexcept {
    const Flicks nearest = nearestCut_.value_or(time);
    if (forward() ? time > cutLimit_ : time < cutLimit_)
        nearestCut_ = forward() ? std::min(nearest, time) : std::max(nearest, time);
}

void EventSearch::offerCuts(const EditReader& edit, std::size_t channel,
                            std::size_t& hint) noexcept {
    const std::optional<Flicks> cut = forward() ? edit.cutAfter(channel, cutLimit_, hint)
                                                : edit.cutBefore(channel, cutLimit_, hint);
    if (cut)
        offerCut(*cut);
}

void EventSearch::offerSorted(const std::vector<double>& times, double step) noexcept {
    // A step of frames is not exact in seconds, so a time that is short of it by less than the
    // tolerance counts as a whole step away.
    const double reach = std::max(step - 2 * kTimeTolerance, 0.0);
    if (forward()) {
        const auto found = std::upper_bound(times.begin(), times.end(), limit_ + reach);
        if (found != times.end())
            offer(*found);
    } else {
        const auto found = std::lower_bound(times.begin(), times.end(), limit_ - reach);
        if (found != times.begin())
            offer(*(found - 1));
    }
}

//     |---A---|---B---|       a transition over the cut reaches `inOffset` into A, `outOffset` into
//          |==.====|          B; its middle lies in one of them
void EventSearch::offerMidPoint(const EditReader& edit, const Cel& cel,
                                std::uint32_t event) noexcept {
    const std::uint32_t count = cel.get_num_events();
    if (event >= count)
        return;
    const ChannelEvent at = cel.get_event(event);
    const EffectGraph* const graph = edit.findEffectGraph(at.effectGraph);
    if (!graph || !graph->isTransition())
        return;
    const std::uint32_t after = at.isOut() ? event + 1 : event; // the in point of B
    const Flicks earliest = after >= 2 ? cel.get_event(after - 2).time : at.time;
    const Flicks latest = after + 1 < count ? cel.get_event(after + 1).time : at.time;
    const Flicks middle = at.time + (graph->outOffset - graph->inOffset) / 2;
    offerCut(std::clamp(middle, earliest, latest));
}

void EventSearch::offerMidPoints(const EditReader& edit, std::size_t channel) noexcept {
    const Cel& cel = edit.getCel(channel);
    const std::uint32_t next = cel.nextAfter(forward() ? cutLimit_ : cutLimit_ - 1);
    // The two points of the cut before, and of the cut after.
    for (std::uint32_t event = next - std::min(next, 2u); event < next + 2; ++event)
        offerMidPoint(edit, cel, event);
}

} // namespace cutroom
