// Changes of single points of a cut event list, of its place as a whole, and of its sharing.
#include "platform/store/CelDoor.h"
#include "platform/store/CelStorage.h"

#include <cmath>
#include <new>

using cutroom::append;
using cutroom::CelStorage;
using cutroom::Flicks;
using cutroom::pairOf;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

Status refused(const char* reason) { return {StatusCode::failed, {}, reason}; }

} // namespace

void Cel::recordChange(EditModificationType kind) {
    if (!edit_)
        return;
    EditModification change(kind);
    change.track = channel_;
    try {
        edit_->addModification(EditModifications(change), false);
    } catch (const std::bad_alloc&) { // the change is made, and will be told
        edit_->addModification(EditModifications(kind), false);
    }
}

Kv::Ptr<Cel> Cel::copy() const {
    auto copy = Kv::makePtr<Cel>();
    copy->storage_ = storage_;
    copy->offset_ = offset_;
    copy->flags_ = flags_;
    return copy;
}

Kv::Ptr<Cel> cutroom::CelAccess::make(const Shared<CelStorage>& storage, Flicks offset,
                                      unsigned flags) {
    auto cel = Kv::makePtr<Cel>();
    cel->storage_ = storage;
    cel->offset_ = offset;
    cel->flags_ = flags;
    return cel;
}

void Cel::assign(const Cel& other) {
    if (&other == this)
        return;
    Door door(*this);
    storage_ = other.storage_;
    offset_ = other.offset_;
    flags_ = other.flags_;
    openIn_.reset();
    door.renumbered(kModEventsAdded);
}

Status Cel::slide(double seconds) {
    if (!cutroom::isStorableTime(seconds))
        return refused("the distance is no usable time");
    const Flicks by = cutroom::toFlicks(seconds);
    Door door(*this);
    if (by == 0 || storage().empty())
        return {};
    if (storage().start() + offset_ + by < -cutroom::kMaxFlicks ||
        storage().end() + offset_ + by > cutroom::kMaxFlicks)
        return refused("a time would lie outside the range of an edit");
    offset_ += by;
    door.changed(kModEventsTrimmed);
    return {};
}

void Cel::moveCut(std::size_t segment, Flicks by) {
    CelStorage& list = unshare();
    if (segment > 0) {
        const ChannelEvent& in = list.events[2 * segment - 2];
        ChannelEvent& out = list.events[2 * segment - 1];
        out.time += by;
        out.stripTime = cutroom::stripTimeAt(in, out.time);
    }
    if (segment < list.segments()) {
        ChannelEvent& in = list.events[2 * segment];
        in.stripTime = cutroom::stripTimeAt(in, in.time + by);
        in.time += by;
        list.starts[segment] += by;
    }
}

Status Cel::trim(std::uint32_t index, Flicks by) {
    Door door(*this);
    const CelStorage& now = storage();
    if (index >= now.events.size())
        return refused("there is no such point");
    if (by == 0)
        return {};
    const std::size_t segment = (index + 1) / 2; // the one that begins at the cut
    const Flicks at = now.events[index].time;
    if (by > cutroom::kMaxFlicks || by < -cutroom::kMaxFlicks ||
        std::abs(at + offset_ + by) > cutroom::kMaxFlicks)
        return refused("a time would lie outside the range of an edit");
    if (segment > 0 && at + by <= now.starts[segment - 1])
        return refused("the segment before the cut would vanish");
    if (segment < now.segments() && at + by >= now.events[2 * segment + 1].time)
        return refused("the segment after the cut would vanish");
    moveCut(segment, by);
    door.changed(kModEventsTrimmed);
    return {};
}

Status Cel::setEvent(std::uint32_t index, const ChannelEvent& event) {
    Door door(*this);
    if (index >= storage().events.size())
        return refused("there is no such point");
    const ChannelEvent& old = storage().events[index];
    ChannelEvent fresh = event;
    fresh.time = old.time + offset_;
    fresh.detail = old.detail;
    fresh.flags = static_cast<std::uint8_t>((event.flags & ~kEventOut) | (old.flags & kEventOut));
    if (Status status = cutroom::checkEventValues(fresh); !status)
        return status;
    if (fresh == get_event(index))
        return {};
    unshare().events[index] = fresh;
    door.changed(kModStripInfo);
    return {};
}

Status Cel::closeOpenIn(const ChannelEvent& out) {
    CelSegment segment = *openIn_;
    segment.end = out.time;
    if (Status status = cutroom::checkSegment(segment); !status)
        return status;
    CelStorage& list = unshare(4);
    const std::uint32_t detail =
        segment.detail.empty() ? 0 : list.detailTable().intern(segment.detail);
    cutroom::EventPair pair = pairOf(segment, detail);
    pair[1] = out;
    pair[1].detail = detail;
    std::vector<ChannelEvent> pieces;
    pieces.reserve(4);
    append(pieces, pair);
    list.replaceRange(segment.start, segment.end, std::move(pieces));
    openIn_.reset();
    return {};
}

Status Cel::addEvent(const ChannelEvent& event, const EventDetail& detail) {
    Door door(*this);
    if (Status status = cutroom::checkEventValues(event); !status)
        return status;
    if (event.isOut() != static_cast<bool>(openIn_))
        return refused(openIn_ ? "an out point must follow the in point"
                               : "the out point has no in point before it");
    if (event.isOut()) {
        if (Status status = closeOpenIn(event); !status)
            return status;
        door.changed(kModEventsAdded);
        return {};
    }
    if (!storage().empty() && event.time < storage().end() + offset_)
        return refused("the point lies before the end of the list");
    auto open = std::make_unique<CelSegment>();
    open->start = event.time;
    open->stripStart = event.stripTime;
    open->material = event.material;
    open->speed = event.speed;
    open->inGraph = event.effectGraph;
    open->flags = event.flags;
    open->detail = detail;
    openIn_ = std::move(open);
    return {};
}

Status Cel::setDetail(std::uint32_t segment, const EventDetail& detail) {
    Door door(*this);
    if (!holdsSegment(segment))
        return refused("there is no such segment");
    if (storage().detail(storage().events[2 * segment].detail) == detail)
        return {};
    CelStorage& list = unshare();
    const std::uint32_t number = detail.empty() ? 0 : list.detailTable().intern(detail);
    list.events[2 * segment].detail = number;
    list.events[2 * segment + 1].detail = number;
    door.changed(kModStripInfo);
    return {};
}

void Cel::setStripCookie(std::uint32_t segment, const Cookie& material) {
    Door door(*this);
    if (!holdsSegment(segment) || storage().events[2 * segment].material == material)
        return;
    CelStorage& list = unshare();
    list.events[2 * segment].material = material;
    list.events[2 * segment + 1].material = material;
    door.changed(kModStripInfo);
}

void Cel::setFlags(unsigned flags) {
    Door door(*this);
    if (flags == flags_)
        return;
    flags_ = flags;
    door.changed(kModGeneral);
}

void Cel::clear() {
    Door door(*this);
    openIn_.reset();
    if (storage().empty())
        return;
    storage_ = {};
    offset_ = 0;
    door.renumbered(kModEventsRemoved);
}
