// Changes of a cut event list: laying, lifting, opening, removing, cutting.
#include "platform/store/CelDoor.h"
#include "platform/store/CelStorage.h"

#include <algorithm>

using cutroom::append;
using cutroom::blackPair;
using cutroom::CelStorage;
using cutroom::Flicks;
using cutroom::pairOf;
using cutroom::Status;
using cutroom::StatusCode;
using cutroom::trimmedPair;

namespace {

Status refused(const char* reason) { return {StatusCode::failed, {}, reason}; }

// The events of [from, to) of `list`, trimmed, moved by `by`; black where it has nothing.
std::vector<ChannelEvent> piecesOf(const CelStorage& list, Flicks from, Flicks to, Flicks by) {
    std::vector<ChannelEvent> pieces;
    const Flicks begin = list.empty() ? to : std::clamp(list.start(), from, to);
    const Flicks end = list.empty() ? to : std::clamp(list.end(), begin, to);
    if (begin < end) {
        const std::size_t first = list.segmentNear(begin);
        const std::size_t last = list.segmentNear(end - 1);
        pieces.reserve(2 * (last - first + 1) + 4);
        if (from < begin)
            append(pieces, blackPair(from, begin));
        const std::size_t at = pieces.size();
        pieces.insert(pieces.end(), list.events.begin() + static_cast<std::ptrdiff_t>(2 * first),
                      list.events.begin() + static_cast<std::ptrdiff_t>(2 * last + 2));
        const auto trim = [&](std::size_t pair) {
            const auto cut =
                trimmedPair(pieces[pair], pieces[pair + 1], std::max(pieces[pair].time, begin),
                            std::min(pieces[pair + 1].time, end));
            std::copy(cut.begin(), cut.end(), pieces.begin() + static_cast<std::ptrdiff_t>(pair));
        };
        trim(at);
        trim(pieces.size() - 2);
        if (end < to)
            append(pieces, blackPair(end, to));
    } else {
        append(pieces, blackPair(from, to));
    }
    if (by != 0)
        for (ChannelEvent& event : pieces)
            event.time += by;
    return pieces;
}

} // namespace

CelStorage& Cel::unshare(std::size_t moreEvents) {
    if (!storage_.isOwn())
        storage_ = cutroom::Shared<CelStorage>(storage_->copyWithRoom(moreEvents));
    CelStorage& own = storage_.write();
    own.shift(0, offset_);
    offset_ = 0;
    return own;
}

void Cel::renumber() noexcept {
    if (life_)
        ++life_->generation;
}

bool Cel::holdsSegment(std::uint32_t segment) const noexcept {
    return segment < storage().segments();
}

Status Cel::setSegments(const std::vector<CelSegment>& segments) {
    for (std::size_t i = 0; i < segments.size(); ++i) {
        if (Status status = cutroom::checkSegment(segments[i]); !status)
            return status;
        if (i > 0 && segments[i].start < segments[i - 1].end)
            return refused("the segments are not in order or overlap");
    }
    Door door(*this);
    CelStorage fresh;
    std::size_t pairs = segments.size();
    for (std::size_t i = 1; i < segments.size(); ++i)
        pairs += segments[i].start > segments[i - 1].end;
    std::vector<ChannelEvent> events;
    events.reserve(2 * pairs);
    for (const CelSegment& segment : segments) {
        if (!events.empty() && events.back().time < segment.start)
            append(events, blackPair(events.back().time, segment.start));
        const std::uint32_t detail =
            segment.detail.empty() ? 0 : fresh.detailTable().intern(segment.detail);
        append(events, pairOf(segment, detail));
    }
    fresh.splice(0, 0, std::move(events));
    storage_ = cutroom::Shared<CelStorage>(std::move(fresh));
    offset_ = 0;
    openIn_.reset();
    door.renumbered(kModEventsAdded);
    return {};
}

Status Cel::overwrite(const CelSegment& segment) {
    if (Status status = cutroom::checkSegment(segment); !status)
        return status;
    Door door(*this);
    CelStorage& list = unshare(6);
    const std::uint32_t detail =
        segment.detail.empty() ? 0 : list.detailTable().intern(segment.detail);
    std::vector<ChannelEvent> pieces;
    pieces.reserve(6);
    append(pieces, pairOf(segment, detail));
    list.replaceRange(segment.start, segment.end, std::move(pieces));
    door.renumbered(kModEventsAdded);
    return {};
}

Status Cel::overwriteFrom(const Cel& source, Flicks from, Flicks to, Flicks at) {
    const auto usable = [](Flicks time) {
        return time >= -cutroom::kMaxFlicks && time <= cutroom::kMaxFlicks;
    };
    if (to <= from)
        return refused("the range is empty");
    if (!usable(from) || !usable(to) || !usable(at) || !usable(at + (to - from)))
        return refused("a time lies outside the range of an edit");
    Door door(*this);
    const cutroom::Shared<CelStorage> held = source.storage_;
    const Flicks moved = at - from + source.offset_;
    const bool fresh = storage().empty(); // then the list's offset moves the events
    auto pieces = piecesOf(*held, from - source.offset_, to - source.offset_, fresh ? 0 : moved);
    CelStorage& list = unshare(pieces.size() + 4);
    cutroom::DetailAdopter details(*held, list);
    if (details.needed())
        for (ChannelEvent& event : pieces)
            details.adopt(event);
    if (fresh)
        list.splice(0, 0, std::move(pieces));
    else
        list.replaceRange(at, at + (to - from), std::move(pieces));
    offset_ = fresh ? moved : 0;
    door.renumbered(kModEventsAdded);
    return {};
}

Status Cel::insertGap(Flicks at, Flicks length) {
    if (length <= 0 || length > cutroom::kMaxFlicks)
        return refused("the gap has no usable length");
    Door door(*this);
    if (storage().empty() || at > storage().end() + offset_)
        return {};
    if (storage().end() + offset_ > cutroom::kMaxFlicks - length)
        return refused("a time would lie outside the range of an edit");
    CelStorage& list = unshare(4);
    if (at < list.start()) {
        list.shift(0, length);
        door.changed(kModEventsTrimmed);
        return {};
    }
    const std::size_t hit = list.segmentNear(at);
    std::vector<ChannelEvent> pieces;
    const cutroom::EventPair whole{list.events[2 * hit], list.events[2 * hit + 1]};
    if (at > whole[0].time)
        append(pieces, trimmedPair(whole[0], whole[1], whole[0].time, at));
    append(pieces, blackPair(at, at + length));
    const std::size_t later = hit + pieces.size() / 2;
    if (at < whole[1].time)
        append(pieces, trimmedPair(whole[0], whole[1], at, whole[1].time));
    list.splice(hit, 1, std::move(pieces));
    list.shift(later, length);
    door.renumbered(kModEventsAdded);
    return {};
}

Status Cel::lift(const TimeRange& range) {
    Flicks from = 0;
    Flicks to = 0;
    if (!cutroom::toFlickRange(range, from, to))
        return refused("a time lies outside the range of an edit");
    Door door(*this);
    if (storage().empty())
        return {};
    from = std::max(from, storage().start() + offset_);
    to = std::min(to, storage().end() + offset_);
    if (from >= to)
        return {};
    CelStorage& list = unshare(6);
    std::vector<ChannelEvent> pieces;
    pieces.reserve(6);
    append(pieces, blackPair(from, to));
    list.replaceRange(from, to, std::move(pieces));
    door.renumbered(kModEventsRemoved);
    return {};
}

Status Cel::remove(const TimeRange& range) {
    Flicks from = 0;
    Flicks to = 0;
    if (!cutroom::toFlickRange(range, from, to))
        return refused("a time lies outside the range of an edit");
    Door door(*this);
    if (from >= to || storage().empty() || from >= storage().end() + offset_)
        return {};
    if (storage().start() + offset_ - (to - from) < -cutroom::kMaxFlicks)
        return refused("a time would lie outside the range of an edit");
    CelStorage& list = unshare(2);
    list.replaceRange(from, to, {});
    const auto later = std::lower_bound(list.starts.begin(), list.starts.end(), to);
    list.shift(static_cast<std::size_t>(later - list.starts.begin()), from - to);
    door.renumbered(kModEventsRemoved);
    return {};
}

Status Cel::split(Flicks time) {
    Door door(*this);
    const std::int64_t found = findSegment(time);
    if (found < 0)
        return refused("nothing lies at the place of the cut");
    const auto segment = static_cast<std::size_t>(found);
    if (storage().starts[segment] + offset_ == time)
        return {};
    CelStorage& list = unshare(2);
    const cutroom::EventPair whole{list.events[2 * segment], list.events[2 * segment + 1]};
    std::vector<ChannelEvent> pieces;
    pieces.reserve(4);
    append(pieces, trimmedPair(whole[0], whole[1], whole[0].time, time));
    append(pieces, trimmedPair(whole[0], whole[1], time, whole[1].time));
    list.splice(segment, 1, std::move(pieces));
    door.renumbered(kModEventsAdded);
    return {};
}
