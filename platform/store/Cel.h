// `Cel`: the cut event list of one channel of an edit, and handles to its points.
//
// A cel is a stable object for as long as its edit has the channel. Its storage (events in time
// order) is shared between copies, together with an offset, so copying and sliding cost nothing per
// event; the first change copies the storage of this one channel.
//
// Always holds: events alternate in and out; the first is an in, the last an out; an out and the in
// after it lie at the same time; no segment is shorter than one flick; an empty cel has no events.
// Changes to a cel of an edit take the edit's lock themselves; a caller that reads one while other
// threads may change it holds `Edit::Lock`. A cel of its own (a copy) belongs to one thread.
#pragma once

#include "platform/base/FrameRate.h"
#include "platform/base/NumRange.h"
#include "platform/base/Object.h"
#include "platform/base/Ptr.h"
#include "platform/base/Status.h"
#include "platform/store/ChannelEvent.h"
#include "platform/store/EventDetail.h"
#include "platform/store/Shared.h"

#include <cstdint>
#include <memory>
#include <vector>

class Cel;
class Edit;

namespace cutroom {
struct CelStorage;
struct CelLife;
struct CelAccess;
} // namespace cutroom

// A handle to one edit point. Holds no share of the storage: it turns invalid when the channel's
// events are renumbered (cut, lift, undo) or go, until a new handle is made. A value; 24 bytes.
class CUTROOM_API ce_handle {
public:
    // Invalid.
    ce_handle() noexcept = default;
    // The point at `index` of `cel`; invalid when there is none.
    ce_handle(const Cel& cel, std::uint32_t index);

    bool valid() const noexcept;
    // The point's place in seconds; kNoTime when invalid.
    double get_edit_time() const noexcept;
    bool is_out_point() const noexcept;
    // The effect graph on the point; the empty id when invalid or without one.
    IdStamp getEffectGraph() const noexcept;
    // The index within the list at the time the handle was made; kept when it turns invalid.
    std::uint32_t getIndex() const noexcept { return index_; }
    // The point itself; a default event when invalid.
    ChannelEvent getEvent() const noexcept;
    // The points after and before; invalid at the ends.
    ce_handle next() const;
    ce_handle previous() const;

    // Same list and same index (also when both have turned invalid).
    friend bool operator==(const ce_handle& a, const ce_handle& b) noexcept {
        return a.life_ == b.life_ && a.index_ == b.index_ && a.generation_ == b.generation_;
    }
    // By place in time, at one time by index; invalid handles by index.
    friend bool operator>(const ce_handle& a, const ce_handle& b) noexcept;

private:
    std::shared_ptr<cutroom::CelLife> life_;
    std::uint32_t index_ = 0;
    std::uint32_t generation_ = 0;
};

CUTROOM_API bool operator>(const ce_handle& a, const ce_handle& b) noexcept;

// One segment of a cel: a view by value, for reading and for laying down.
struct CUTROOM_API CelSegment {
    cutroom::Flicks start = 0;
    cutroom::Flicks end = 0; // exclusive
    cutroom::Flicks stripStart = 0;
    Cookie material; // invalid: black
    double speed = 1.0;
    IdStamp inGraph;        // effect graph on the in point (a transition from the one before)
    IdStamp outGraph;       // on the out point
    std::uint8_t flags = 0; // ChannelEventFlag without kEventOut
    EventDetail detail;

    friend bool operator==(const CelSegment&, const CelSegment&) = default;
};

// What `Cel::simplify` joins.
enum class CelSimplify : int {
    joinContinuous = 1, // neighbours whose material runs on
    quantise = 3,       // moves every point to its nearest frame; segments that vanish go
};

class CUTROOM_API Cel : public Kv::InternalRefCount {
public:
    // An empty list of its own.
    Cel();
    ~Cel() override;
    Cel(const Cel&) = delete;
    Cel& operator=(const Cel&) = delete;

    // --- reading -------------------------------------------------------------------------------
    std::uint32_t get_num_events() const;
    // The event at `index`, times with the channel's offset applied; a default event past the end.
    ChannelEvent get_event(std::uint32_t index) const;
    ce_handle getHandle(std::uint32_t index) const { return ce_handle(*this, index); }
    // The first point at or after `seconds` whose out flag equals that of `flags`; invalid when
    // there is none.
    ce_handle find_ceh(double seconds, std::uint8_t flags) const;
    // Index of the first event later than `time` (`nextAfter`) and of the last earlier than it
    // (`lastBefore`, -1 when none). O(log n), no allocation.
    std::uint32_t nextAfter(cutroom::Flicks time) const noexcept;
    std::int64_t lastBefore(cutroom::Flicks time) const noexcept;

    // Number of segments, and one of them by its number.
    std::uint32_t numSegments() const { return get_num_events() / 2; }
    CelSegment getSegment(std::uint32_t index) const;
    // The segment that holds `time` (start inclusive); -1 when none does.
    std::int64_t findSegment(cutroom::Flicks time) const noexcept;
    // The details of an event; an empty detail for 0.
    const EventDetail& getDetail(std::uint32_t detail) const;

    // Start of the first and end of the last segment, in seconds; kNoTime when empty.
    double getStartTime() const;
    double getEndTime() const;
    // The same over segments with material; kNoTime when there is none.
    double get_significant_start_time() const;
    double get_significant_end_time() const;
    // The material cut in at `seconds`, and the place in it in seconds; the invalid cookie and
    // kNoTime where it is black or outside.
    Cookie get_strip_cookie(double seconds) const;
    double get_strip_time(double seconds) const;
    // The index of the first event that is not on a frame of `rate`, or 0 when all are.
    std::uint32_t checkQuantisation(const Kv::FrameRate& rate) const;

    unsigned getFlags() const noexcept { return flags_; }
    bool hasFlag(CelFlag flag) const noexcept { return (flags_ & flag) != 0; }

    // Order, touching, alternation, sizes; empty text when all holds, else what does not.
    std::string checkConsistency() const;
    // Tells whether events, details and flags are equal, whatever the storage.
    bool sameContents(const Cel& other) const;

    // --- changing ------------------------------------------------------------------------------
    // Each checks the whole of what it is given first, and leaves the list as it was on failure.
    // On a cel of an edit it marks the edit dirty and records the change with it.

    // A copy that shares the storage; O(1).
    Kv::Ptr<Cel> copy() const;
    // Takes the contents of `other` by sharing; O(1).
    void assign(const Cel& other);
    // Moves every event by `seconds`; O(1).
    cutroom::Status slide(double seconds);
    // Replaces all contents. Segments are in order and touch; gaps between them become black.
    cutroom::Status setSegments(const std::vector<CelSegment>& segments);
    // Lays one segment over what is there (extends the list with black where needed).
    //   before  |--A--|--B--|--C--|        after  |--A--|b|--new--|C|
    cutroom::Status overwrite(const CelSegment& segment);
    // Lays [from, to) of `source` at `at`, over what is there; handles inside clips are trimmed.
    cutroom::Status overwriteFrom(const Cel& source, cutroom::Flicks from, cutroom::Flicks to,
                                  cutroom::Flicks at);
    // Opens a black gap of `length` at `at`; what lies later moves later. Before the list's start
    // the list moves; past its end nothing happens.
    cutroom::Status insertGap(cutroom::Flicks at, cutroom::Flicks length);
    // Lifts a range: as far as it lies within the list, it becomes black.
    cutroom::Status lift(const TimeRange& range);
    // Takes a range out; what lies later moves earlier by the whole range.
    cutroom::Status remove(const TimeRange& range);
    // Adds a cut inside the segment at `time`, leaving the picture as it is. Nothing to do where
    // there is a cut; fails outside the list.
    cutroom::Status split(cutroom::Flicks time);
    // Moves the cut to which the point `index` belongs (an out point and the in point after it) by
    // `by`, within its two segments; at the ends of the list the single point.
    cutroom::Status trim(std::uint32_t index, cutroom::Flicks by);
    // Replaces one event's material, strip time, speed, effect graph or flags; not its time.
    cutroom::Status setEvent(std::uint32_t index, const ChannelEvent& event);
    // Appends an event: an in not before the list's end (black fills what lies between), then its
    // out. The in is seen only once its out is there. `detail` is the in's; the event's own number
    // of a detail, which means nothing in another list, is not used.
    cutroom::Status addEvent(const ChannelEvent& event, const EventDetail& detail = {});
    cutroom::Status setDetail(std::uint32_t segment, const EventDetail& detail);
    void setStripCookie(std::uint32_t segment, const Cookie& material);
    // Joins or quantises over `range` (frames of `rate`).
    cutroom::Status simplify(const TimeRange& range, CelSimplify mode, const Kv::FrameRate& rate);
    void setFlags(unsigned flags);
    void clear();

    // Bytes of storage that this cel alone, or together with others, keeps alive.
    std::size_t storageBytes() const noexcept;

private:
    friend class ce_handle;
    friend class Edit;
    friend struct cutroom::CelAccess;
    class Door;

    const cutroom::CelStorage& storage() const noexcept;
    // A time as the storage counts it.
    cutroom::Flicks inside(cutroom::Flicks time) const noexcept;
    // Storage of this cel alone, with room for further events, the offset worked into its times.
    cutroom::CelStorage& unshare(std::size_t moreEvents = 0);
    // Handles made so far turn invalid.
    void renumber() noexcept;
    void recordChange(EditModificationType kind);
    // The segment's number when it holds `index`; false past the end.
    bool holdsSegment(std::uint32_t segment) const noexcept;
    void moveCut(std::size_t segment, cutroom::Flicks by);
    bool joinContinuous(cutroom::Flicks from, cutroom::Flicks to);
    bool quantise(cutroom::Flicks from, cutroom::Flicks to, const Kv::FrameRate& rate);
    cutroom::Status closeOpenIn(const ChannelEvent& out);

    cutroom::Shared<cutroom::CelStorage> storage_;
    mutable std::shared_ptr<cutroom::CelLife> life_; // made with the first handle
    cutroom::Flicks offset_ = 0;
    unsigned flags_ = 0;
    Edit* edit_ = nullptr; // cleared by the edit when the channel or the edit goes
    IdStamp channel_;
    std::unique_ptr<CelSegment> openIn_; // an in that waits for its out
};
