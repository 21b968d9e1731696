// Storages stored as what differs from an earlier one, and the table of those stored.
#include "platform/store/CelCodec.h"
#include "platform/store/EditFields.h"

#include <algorithm>

namespace cutroom {

namespace {

// True when the segments show the same, the second one `shift` later.
bool sameSegment(const CelStorage& a, std::size_t i, const CelStorage& b, std::size_t k,
                 Flicks shift) {
    for (std::size_t point = 0; point < 2; ++point) {
        ChannelEvent event = a.events[2 * i + point];
        event.time += shift;
        if (!(event == b.events[2 * k + point]))
            return false;
    }
    return a.details == b.details || a.events[2 * i].detail == 0;
}

// The segments [first, last) as a storage.
CelStorage stretchOf(const CelStorage& list, std::size_t first, std::size_t last) {
    CelStorage stretch;
    stretch.details = list.details;
    const auto begin = list.events.begin();
    stretch.splice(0, 0,
                   {begin + static_cast<std::ptrdiff_t>(2 * first),
                    begin + static_cast<std::ptrdiff_t>(2 * last)});
    return stretch;
}

// True when each pair begins where the one before ends, and all lie within the store's range.
bool touch(const std::vector<ChannelEvent>& events) {
    for (std::size_t i = 2; i < events.size(); i += 2)
        if (events[i].time != events[i - 1].time)
            return false;
    return events.empty() ||
           (checkEventValues(events.front()).ok() && checkEventValues(events.back()).ok());
}

} // namespace

std::optional<std::string> encodeDifference(const CelStorage& base, std::size_t baseNumber,
                                            const CelStorage& list) {
    const std::size_t shorter = std::min(base.segments(), list.segments());
    if (shorter == 0)
        return std::nullopt;
    std::size_t head = 0;
    while (head < shorter && sameSegment(base, head, list, head, 0))
        ++head;
    const Flicks shift = list.end() - base.end();
    std::size_t tail = 0;
    while (tail < shorter - head &&
           sameSegment(base, base.segments() - 1 - tail, list, list.segments() - 1 - tail, shift))
        ++tail;
    if (2 * (head + tail) < list.segments())
        return std::nullopt;
    ByteWriter out;
    out.varint(baseNumber);
    out.varint(head);
    out.varint(tail);
    out.varint(fields::zigzag(shift));
    out.raw(encodeStorage(stretchOf(list, head, list.segments() - tail)));
    return out.take();
}

std::optional<CelStorage> decodeDifference(ByteReader& in,
                                           const std::vector<Shared<CelStorage>>& chunks) {
    const std::uint64_t number = in.varint();
    const std::uint64_t head = in.varint();
    const std::uint64_t tail = in.varint();
    const Flicks shift = fields::unzigzag(in.varint());
    const bool known =
        number < chunks.size() && shift >= -2 * kMaxFlicks && shift <= 2 * kMaxFlicks;
    if (!known || head > chunks[static_cast<std::size_t>(number)]->segments() ||
        tail > chunks[static_cast<std::size_t>(number)]->segments() - head)
        in.fail();
    const auto stretch = decodeStorage(in);
    if (!stretch)
        return std::nullopt;
    const CelStorage& base = *chunks[static_cast<std::size_t>(number)];
    CelStorage list;
    list.details = base.details;
    DetailAdopter details(*stretch, list);
    const auto begin = base.events.begin();
    std::vector<ChannelEvent> events(begin, begin + static_cast<std::ptrdiff_t>(2 * head));
    events.reserve(2 * static_cast<std::size_t>(head + tail) + stretch->events.size());
    for (ChannelEvent event : stretch->events) {
        details.adopt(event);
        events.push_back(event);
    }
    for (auto event = base.events.end() - static_cast<std::ptrdiff_t>(2 * tail);
         event != base.events.end(); ++event) {
        events.push_back(*event);
        events.back().time += shift;
    }
    if (!touch(events)) {
        in.fail();
        return std::nullopt;
    }
    list.splice(0, 0, std::move(events));
    return list;
}

std::size_t CelChunkWriter::number(const IdStamp& channel, const Cel& cel) {
    const Shared<CelStorage>& storage = CelAccess::storage(cel);
    const auto [entry, fresh] = known_.try_emplace(storage.identity(), chunks_.size());
    if (fresh) {
        const auto last = lastOf_.find(channel);
        auto difference = last == lastOf_.end()
                              ? std::nullopt
                              : encodeDifference(*held_[last->second], last->second, *storage);
        chunks_.push_back(difference ? Chunk{"DIFF", std::move(*difference)}
                                     : Chunk{"CELS", encodeStorage(*storage)});
        held_.push_back(storage);
    }
    lastOf_[channel] = entry->second;
    return entry->second;
}

} // namespace cutroom
