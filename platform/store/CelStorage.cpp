#include "platform/store/CelStorage.h"

#include <algorithm>
#include <cmath>

namespace cutroom {

namespace {

constexpr double kMaxSpeed = 1e6;

bool inRange(Flicks time) noexcept { return time >= -kMaxFlicks && time <= kMaxFlicks; }

} // namespace

std::size_t CelStorage::segmentNear(Flicks time) const noexcept {
    const auto after = std::upper_bound(starts.begin(), starts.end(), time) - starts.begin();
    return after == 0 ? 0 : static_cast<std::size_t>(after - 1);
}

void CelStorage::splice(std::size_t first, std::size_t count, std::vector<ChannelEvent>&& with) {
    if (first == 0 && count == segments()) {
        std::vector<Flicks> fresh(with.size() / 2);
        for (std::size_t i = 0; i < fresh.size(); ++i)
            fresh[i] = with[2 * i].time;
        starts = std::move(fresh);
        events = std::move(with);
        return;
    }
    const std::size_t segmentsNow = segments() - count + with.size() / 2;
    if (segmentsNow > starts.capacity() || 2 * segmentsNow > events.capacity()) {
        const std::size_t room = std::max(segmentsNow, segmentsNow + segments() / 8);
        starts.reserve(room);
        events.reserve(2 * room);
    }
    // From here on nothing allocates.
    const std::size_t kept = std::min(count, with.size() / 2);
    std::copy_n(with.begin(), 2 * kept, events.begin() + static_cast<std::ptrdiff_t>(2 * first));
    const auto event = events.begin() + static_cast<std::ptrdiff_t>(2 * (first + kept));
    const auto start = starts.begin() + static_cast<std::ptrdiff_t>(first + kept);
    if (count > kept) {
        events.erase(event, event + static_cast<std::ptrdiff_t>(2 * (count - kept)));
        starts.erase(start, start + static_cast<std::ptrdiff_t>(count - kept));
    } else {
        events.insert(event, with.begin() + static_cast<std::ptrdiff_t>(2 * kept), with.end());
        starts.insert(start, with.size() / 2 - kept, 0);
    }
    for (std::size_t i = 0; i < with.size() / 2; ++i)
        starts[first + i] = with[2 * i].time;
}

void CelStorage::shift(std::size_t first, Flicks by) noexcept {
    if (by == 0)
        return;
    for (std::size_t i = 2 * first; i < events.size(); ++i)
        events[i].time += by;
    for (std::size_t i = first; i < starts.size(); ++i)
        starts[i] += by;
}

void CelStorage::replaceRange(Flicks from, Flicks to, std::vector<ChannelEvent>&& pieces) {
    if (empty() || from >= end()) {
        if (!empty() && from > end() && !pieces.empty()) {
            const EventPair black = blackPair(end(), from);
            pieces.insert(pieces.begin(), black.begin(), black.end());
        }
        splice(segments(), 0, std::move(pieces));
        return;
    }
    if (to <= start()) {
        if (to < start() && !pieces.empty())
            append(pieces, blackPair(to, start()));
        splice(0, 0, std::move(pieces));
        return;
    }
    const std::size_t first = segmentNear(from);
    const std::size_t last = segmentNear(to - 1);
    if (from > starts[first]) {
        const EventPair left =
            trimmedPair(events[2 * first], events[2 * first + 1], starts[first], from);
        pieces.insert(pieces.begin(), left.begin(), left.end());
    }
    const ChannelEvent& lastOut = events[2 * last + 1];
    if (to < lastOut.time)
        append(pieces, trimmedPair(events[2 * last], lastOut, to, lastOut.time));
    splice(first, last - first + 1, std::move(pieces));
}

CelStorage CelStorage::copyWithRoom(std::size_t moreEvents) const {
    CelStorage copy;
    copy.details = details;
    copy.events.reserve(events.size() + moreEvents);
    copy.events.assign(events.begin(), events.end());
    copy.starts.reserve(starts.size() + moreEvents / 2);
    copy.starts.assign(starts.begin(), starts.end());
    return copy;
}

DetailTable& CelStorage::detailTable() {
    if (!details)
        details = Kv::makePtr<DetailTable>();
    return *details;
}

const EventDetail& CelStorage::detail(std::uint32_t number) const noexcept {
    static const EventDetail none;
    return details ? details->get(number) : none;
}

std::size_t CelStorage::bytes() const noexcept {
    return sizeof(*this) + events.capacity() * sizeof(ChannelEvent) +
           starts.capacity() * sizeof(Flicks) + (details ? details->bytes() : 0);
}

DetailAdopter::DetailAdopter(const CelStorage& source, CelStorage& target)
    : source_(source), target_(target) {
    if (!target_.details)
        target_.details = source_.details;
}

void DetailAdopter::adopt(ChannelEvent& event) {
    if (event.detail == 0 || !needed())
        return;
    const auto [entry, fresh] = known_.try_emplace(event.detail, 0);
    if (fresh)
        entry->second = target_.detailTable().intern(source_.detail(event.detail));
    event.detail = entry->second;
}

Flicks stripTimeAt(const ChannelEvent& in, Flicks time) noexcept {
    const Flicks delta = time - in.time;
    if ((in.flags & kEventFreeze) != 0)
        return in.stripTime;
    const double limit = static_cast<double>(kMaxFlicks);
    if (in.speed == 1.0)
        return std::clamp(in.stripTime + delta, -kMaxFlicks, kMaxFlicks);
    const double moved = std::clamp(in.speed * static_cast<double>(delta), -limit, limit);
    return std::clamp(in.stripTime + static_cast<Flicks>(std::llround(moved)), -kMaxFlicks,
                      kMaxFlicks);
}

EventPair trimmedPair(const ChannelEvent& in, const ChannelEvent& out, Flicks from,
                      Flicks to) noexcept {
    EventPair pair{in, out};
    if (from > in.time) {
        pair[0].stripTime = stripTimeAt(in, from);
        pair[0].time = from;
        pair[0].effectGraph = IdStamp();
    }
    if (to < out.time) {
        pair[1].stripTime = stripTimeAt(in, to);
        pair[1].time = to;
        pair[1].effectGraph = IdStamp();
    }
    return pair;
}

EventPair blackPair(Flicks from, Flicks to) noexcept {
    CelSegment black;
    black.start = from;
    black.end = to;
    return pairOf(black, 0);
}

EventPair pairOf(const CelSegment& segment, std::uint32_t detail) noexcept {
    EventPair pair;
    ChannelEvent& in = pair[0];
    in.time = segment.start;
    in.stripTime = segment.stripStart;
    in.material = segment.material;
    in.speed = segment.speed;
    in.effectGraph = segment.inGraph;
    in.detail = detail;
    in.flags = static_cast<std::uint8_t>(segment.flags & ~kEventOut);
    ChannelEvent& out = pair[1];
    out = in;
    out.time = segment.end;
    out.stripTime = stripTimeAt(in, segment.end);
    out.effectGraph = segment.outGraph;
    out.flags |= kEventOut;
    return pair;
}

void append(std::vector<ChannelEvent>& events, const EventPair& pair) {
    events.insert(events.end(), pair.begin(), pair.end());
}

Status checkEventValues(const ChannelEvent& event) {
    if (!inRange(event.time) || !inRange(event.stripTime))
        return {StatusCode::failed, {}, "a time lies outside the range of an edit"};
    if (!std::isfinite(event.speed) || std::fabs(event.speed) > kMaxSpeed)
        return {StatusCode::failed, {}, "a speed is no usable number"};
    return {};
}

Status checkSegment(const CelSegment& segment) {
    if (segment.end <= segment.start)
        return {StatusCode::failed, {}, "a segment ends before it begins"};
    if (!inRange(segment.end))
        return {StatusCode::failed, {}, "a time lies outside the range of an edit"};
    ChannelEvent in; // without its out point, which is worked out of sound numbers only
    in.time = segment.start;
    in.stripTime = segment.stripStart;
    in.speed = segment.speed;
    return checkEventValues(in);
}

bool toFlickRange(const TimeRange& range, Flicks& from, Flicks& to) noexcept {
    if (!isStorableTime(range.getStart()) || !isStorableTime(range.getEnd()))
        return false;
    from = toFlicks(range.getStart());
    to = toFlicks(range.getEnd());
    return true;
}

} // namespace cutroom
