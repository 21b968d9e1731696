// Joining neighbours whose material runs on, and moving points to frames.
#include "platform/store/CelDoor.h"
#include "platform/store/CelStorage.h"

#include <algorithm>

using cutroom::append;
using cutroom::CelStorage;
using cutroom::Flicks;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

// True when `in`, the point after `out`, only continues the material before it.
bool runsOn(const ChannelEvent& before, const ChannelEvent& out, const ChannelEvent& in) {
    const auto kind = [](const ChannelEvent& event) { return event.flags & ~kEventOut; };
    if (out.effectGraph.valid() || in.effectGraph.valid() || before.detail != in.detail ||
        before.material != in.material || kind(before) != kind(in))
        return false;
    return in.isBlack() || (before.speed == in.speed && in.stripTime == out.stripTime);
}

} // namespace

Status Cel::simplify(const TimeRange& range, CelSimplify mode, const Kv::FrameRate& rate) {
    Flicks from = 0;
    Flicks to = 0;
    if (!cutroom::toFlickRange(range, from, to))
        return {StatusCode::failed, {}, "a time lies outside the range of an edit"};
    if (mode == CelSimplify::quantise && !rate.valid())
        return {StatusCode::failed, {}, "there is no frame rate to go by"};
    Door door(*this);
    if (storage().empty())
        return {};
    if (mode == CelSimplify::joinContinuous) {
        if (joinContinuous(from, to))
            door.renumbered(kModEventsRemoved);
    } else if (quantise(from, to, rate)) {
        door.renumbered(kModEventsTrimmed);
    }
    return {};
}

bool Cel::joinContinuous(Flicks from, Flicks to) {
    const std::vector<ChannelEvent>& events = storage().events;
    std::vector<ChannelEvent> joined(events.begin(), events.begin() + 2);
    joined.reserve(events.size());
    for (std::size_t i = 2; i < events.size(); i += 2) {
        const Flicks at = events[i].time + offset_;
        if (at >= from && at <= to && runsOn(joined[joined.size() - 2], joined.back(), events[i]))
            joined.back() = events[i + 1];
        else
            joined.insert(joined.end(), events.begin() + static_cast<std::ptrdiff_t>(i),
                          events.begin() + static_cast<std::ptrdiff_t>(i + 2));
    }
    if (joined.size() == events.size())
        return false;
    CelStorage& list = unshare();
    const Flicks moved = list.start() - joined.front().time; // the offset, worked in by now
    for (ChannelEvent& event : joined)
        event.time += moved;
    list.splice(0, list.segments(), std::move(joined));
    return true;
}

bool Cel::quantise(Flicks from, Flicks to, const Kv::FrameRate& rate) {
    const std::vector<ChannelEvent>& events = storage().events;
    std::vector<ChannelEvent> fresh;
    fresh.reserve(events.size());
    bool moved = false;
    Flicks last = -2 * cutroom::kMaxFlicks; // points never change their order
    const auto place = [&](Flicks time) {
        const bool inside = time >= from && time <= to;
        const Flicks put =
            std::clamp(inside ? rate.frameToFlicks(rate.flicksToFrameNearest(time)) : time,
                       std::max(last, -cutroom::kMaxFlicks), cutroom::kMaxFlicks);
        moved = moved || put != time;
        return last = put;
    };
    Flicks start = place(events.front().time + offset_);
    for (std::size_t i = 0; i < events.size(); i += 2) {
        cutroom::EventPair pair{events[i], events[i + 1]};
        const Flicks end = place(pair[1].time + offset_);
        pair[0].stripTime = cutroom::stripTimeAt(pair[0], start - offset_);
        pair[0].time = start;
        if (end != pair[1].time + offset_ || pair[0].stripTime != events[i].stripTime)
            pair[1].stripTime = cutroom::stripTimeAt(pair[0], end);
        pair[1].time = end;
        if (start < end)
            append(fresh, pair);
        start = end;
    }
    if (!moved)
        return false;
    CelStorage& list = unshare();
    list.splice(0, list.segments(), std::move(fresh));
    return true;
}
