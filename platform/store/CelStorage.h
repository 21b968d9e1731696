// `CelStorage`: the events of a cut event list, and the arithmetic of its segments.
//
// Internal to the store. Times are those of the storage; the list that shows it adds its offset.
#pragma once

#include "platform/base/Ptr.h"
#include "platform/store/Cel.h"
#include "platform/store/ChannelEvent.h"
#include "platform/store/DetailTable.h"

#include <array>
#include <unordered_map>
#include <vector>

namespace cutroom {

// Holds: two events a segment (in, out); `starts[i]` equals the time of event 2i (kept apart and
// dense, for searching).
struct CelStorage {
    std::vector<ChannelEvent> events;
    std::vector<Flicks> starts;
    Kv::Ptr<DetailTable> details; // may be null: no details

    std::size_t segments() const noexcept { return starts.size(); }
    bool empty() const noexcept { return starts.empty(); }
    // Only when not empty.
    Flicks start() const noexcept { return starts.front(); }
    Flicks end() const noexcept { return events.back().time; }
    // The segment that holds `time`; the first or last one for times outside. Not when empty.
    std::size_t segmentNear(Flicks time) const noexcept;

    // Replaces `count` segments from `first` on by the pairs in `with`.
    void splice(std::size_t first, std::size_t count, std::vector<ChannelEvent>&& with);
    // Moves all segments from `first` on.
    void shift(std::size_t first, Flicks by) noexcept;
    // Puts `pieces`, pairs that fill [from, to), in place of what lies there; black fills the
    // space between them and the list. With empty `pieces` the range is cut out, and what lies
    // later stays where it is.
    void replaceRange(Flicks from, Flicks to, std::vector<ChannelEvent>&& pieces);
    // A copy with room for further events.
    CelStorage copyWithRoom(std::size_t moreEvents) const;

    // The table, made when there is none.
    DetailTable& detailTable();
    const EventDetail& detail(std::uint32_t number) const noexcept;
    std::size_t bytes() const noexcept;
};

// Gives the details of events that come from `source` their numbers in `target`, which takes over
// the source's table when it has none.
class DetailAdopter {
public:
    DetailAdopter(const CelStorage& source, CelStorage& target);
    // False when the numbers mean the same in both.
    bool needed() const noexcept { return source_.details && source_.details != target_.details; }
    void adopt(ChannelEvent& event);

private:
    const CelStorage& source_;
    CelStorage& target_;
    std::unordered_map<std::uint32_t, std::uint32_t> known_;
};

using EventPair = std::array<ChannelEvent, 2>;

// The place in the material at `time` of the segment that begins with `in`; held within the store's
// range.
Flicks stripTimeAt(const ChannelEvent& in, Flicks time) noexcept;
// The part [from, to) of a segment. An end that is cut off loses its effect graph.
EventPair trimmedPair(const ChannelEvent& in, const ChannelEvent& out, Flicks from,
                      Flicks to) noexcept;
EventPair blackPair(Flicks from, Flicks to) noexcept;
EventPair pairOf(const CelSegment& segment, std::uint32_t detail) noexcept;
void append(std::vector<ChannelEvent>& events, const EventPair& pair);

// Tells why a segment, or an event's numbers, cannot be laid down; ok when they can.
Status checkSegment(const CelSegment& segment);
Status checkEventValues(const ChannelEvent& event);
// The range in flicks; nothing when an end is not storable.
bool toFlickRange(const TimeRange& range, Flicks& from, Flicks& to) noexcept;

// What handles point to: the list, and the number of its present numbering.
struct CelLife {
    const Cel* cel = nullptr; // null when the list is gone
    std::uint32_t generation = 0;
};

// What a list is made of, for those who store lists.
struct CelAccess {
    static const Shared<CelStorage>& storage(const Cel& cel) noexcept { return cel.storage_; }
    static Flicks offset(const Cel& cel) noexcept { return cel.offset_; }
    // A list of its own that shows `storage` moved by `offset`.
    static Kv::Ptr<Cel> make(const Shared<CelStorage>& storage, Flicks offset, unsigned flags);
};

} // namespace cutroom

inline const cutroom::CelStorage& Cel::storage() const noexcept { return *storage_; }
