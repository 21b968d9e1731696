// `IndexIndependentEventList`: a set of edit points remembered by what they are instead of by
// index, so that a selection survives a change that renumbers the events.
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/store/Cel.h"
#include "platform/store/CelEventPair.h"
#include "platform/store/EditPtr.h"

#include <cstddef>
#include <vector>

class UnjoinedCuts;

// A snapshot; keeps its edit open. One thread at a time.
class CUTROOM_API IndexIndependentEventList {
public:
    IndexIndependentEventList() = default;
    IndexIndependentEventList(const UnjoinedCuts& cuts, const EditPtr& edit,
                              const IdStamp& channel);

    // Takes the event of each cut, in list order; one whose handle is no longer valid is never
    // found again. Nothing changes when there is no edit or the channel's id is the empty one.
    void buildFrom(const UnjoinedCuts& cuts, const EditPtr& edit, const IdStamp& channel);
    // Takes the two points of a segment.
    void buildFrom(const CelEventPair& segment);

    std::size_t size() const noexcept { return events_.size(); }
    const IdStamp& getTrack() const noexcept { return channel_; }
    const EditPtr& getEdit() const noexcept { return edit_; }
    // `index` must be below the count.
    const ChannelEvent& getEvent(std::size_t index) const { return events_[index]; }

    // Exactly the same time, material and in/out flag byte.
    static bool eventsMatch(const ChannelEvent& a, const ChannelEvent& b);
    // The point of the channel that matches event `index` now; invalid past the end, when the
    // channel has left the edit, and when no point matches. Of several at one time the last.
    ce_handle getHandleFor(std::size_t index) const;

private:
    std::vector<ChannelEvent> events_;
    EditPtr edit_;
    IdStamp channel_;
};
