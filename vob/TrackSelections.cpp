#include "vob/TrackSelections.h"

#include "platform/store/Edit.h"

#include <algorithm>
#include <optional>

namespace {

bool sameBeginning(const ChannelEvent& a, const ChannelEvent& b) {
    return IndexIndependentEventList::eventsMatch(a, b);
}

// The in point of the segment that `event` began, wherever it stands now.
std::optional<std::uint32_t> findAgain(const Cel& cel, std::uint32_t index,
                                       const ChannelEvent& event) {
    if (index < cel.get_num_events() && sameBeginning(cel.get_event(index), event))
        return index;
    for (std::uint32_t at = cel.nextAfter(event.time - 1); at < cel.get_num_events(); ++at) {
        const ChannelEvent candidate = cel.get_event(at);
        if (candidate.time != event.time)
            break;
        if (sameBeginning(candidate, event))
            return at;
    }
    return std::nullopt;
}

} // namespace

TrackSelections::TrackSelections(const EditPtr& edit, const IdStamp& channel)
    : edit_(edit), channel_(channel) {}

Kv::Ptr<Cel> TrackSelections::cel() const {
    return edit_ ? edit_->get_edit_cel_p(channel_) : Kv::Ptr<Cel>();
}

void TrackSelections::remember() { snapshot_.buildFrom(cuts_, edit_, channel_); }

// --- unjoined cuts -------------------------------------------------------------------------------

// The events may have been renumbered within a change that is not told yet, so what is selected is
// found again first.
bool TrackSelections::addCut(const ce_handle& handle, unsigned flags) {
    const bool dropped = verifyCuts();
    if (!handle.valid() || (cuts_.isMember(handle) && cuts_.getFlag(handle) == flags))
        return dropped;
    cuts_.addHandle(handle, flags);
    remember();
    return true;
}

bool TrackSelections::deleteCut(const ce_handle& handle) {
    const bool dropped = verifyCuts();
    if (!cuts_.isMember(handle))
        return dropped;
    cuts_.deleteHandle(handle);
    remember();
    return true;
}

bool TrackSelections::toggleCut(const ce_handle& handle, unsigned flags) {
    const bool dropped = verifyCuts();
    return (cuts_.isMember(handle) ? deleteCut(handle) : addCut(handle, flags)) || dropped;
}

bool TrackSelections::clearCuts() {
    if (cuts_.empty())
        return false;
    cuts_.clear();
    remember();
    return true;
}

void TrackSelections::setCuts(const UnjoinedCuts& cuts) {
    cuts_ = cuts;
    remember();
}

// --- segments ------------------------------------------------------------------------------------

std::vector<std::uint32_t> TrackSelections::getSelectedSegments() const {
    std::vector<std::uint32_t> indices;
    indices.reserve(segments_.size());
    for (const Segment& segment : segments_)
        indices.push_back(segment.index);
    return indices;
}

bool TrackSelections::isSegmentSelected(std::uint32_t inEvent) const noexcept {
    return std::any_of(segments_.begin(), segments_.end(),
                       [&](const Segment& segment) { return segment.index == inEvent; });
}

bool TrackSelections::selectSegment(std::uint32_t inEvent, bool on) {
    const auto at =
        std::lower_bound(segments_.begin(), segments_.end(), inEvent,
                         [](const Segment& a, std::uint32_t index) { return a.index < index; });
    const bool known = at != segments_.end() && at->index == inEvent;
    if (known == on)
        return false;
    if (!on) {
        segments_.erase(at);
        return true;
    }
    const Kv::Ptr<Cel> list = cel();
    if (!list || inEvent >= list->get_num_events() || list->get_event(inEvent).isOut())
        return false;
    segments_.insert(at, {inEvent, list->get_event(inEvent)});
    return true;
}

bool TrackSelections::clearSegments() {
    const bool any = anySegments();
    segments_.clear();
    return any;
}

LightweightString<char> TrackSelections::segmentsAsString() const {
    std::vector<std::string> pieces;
    for (const Segment& segment : segments_)
        pieces.push_back(std::to_string(segment.index));
    return cutroom::join(pieces, ",");
}

void TrackSelections::segmentsFromString(const LightweightString<char>& text) {
    segments_.clear();
    for (const std::string& piece : cutroom::split(text, ',')) {
        const auto index = cutroom::parseUnsigned(piece);
        if (index && *index < 0xFFFFFFFFull)
            selectSegment(static_cast<std::uint32_t>(*index), true);
    }
}

// --- following the edit --------------------------------------------------------------------------

bool TrackSelections::verifyCuts() {
    const auto before = cuts_.size();
    bool allValid = true;
    for (unsigned short i = 0; i < before; ++i)
        allValid = allValid && cuts_.getHandleRef(i).valid();
    if (allValid) {
        remember(); // points may have moved
        return false;
    }
    UnjoinedCuts found;
    found.buildFrom(snapshot_);
    for (unsigned short i = 0; i < found.size(); ++i) // the flags go with the event
        for (std::size_t old = 0; old < snapshot_.size(); ++old)
            if (snapshot_.getHandleFor(old) == found.getHandleRef(i))
                found.setFlag(i, cuts_.getFlag(static_cast<unsigned short>(old)), true);
    setCuts(found);
    return cuts_.size() != before;
}

bool TrackSelections::verifySegments() {
    const Kv::Ptr<Cel> list = cel();
    std::vector<Segment> kept;
    if (list)
        for (const Segment& segment : segments_)
            if (const auto index = findAgain(*list, segment.index, segment.event))
                kept.push_back({*index, segment.event});
    std::sort(kept.begin(), kept.end(),
              [](const Segment& a, const Segment& b) { return a.index < b.index; });
    const bool changed =
        kept.size() != segments_.size() ||
        !std::equal(kept.begin(), kept.end(), segments_.begin(),
                    [](const auto& a, const auto& b) { return a.index == b.index; });
    segments_ = std::move(kept);
    return changed;
}
