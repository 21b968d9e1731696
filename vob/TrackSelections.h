// `TrackSelections`: what is selected on one channel of a viewed edit: segments and unjoined cuts.
#pragma once

#include "editops/basics/IndexIndependentEventList.h"
#include "editops/basics/UnjoinedCuts.h"
#include "platform/base/IdStamp.h"
#include "platform/store/EditPtr.h"

#include <cstdint>
#include <vector>

// Part of a Vob; user-interface thread. Changing it tells nobody: that is the Vob's matter. Both
// selections survive changes that renumber the channel's events: what was selected is found again
// by time and material.
class CUTROOM_API TrackSelections {
public:
    TrackSelections() = default;
    TrackSelections(const EditPtr& edit, const IdStamp& channel);

    const IdStamp& getChannel() const noexcept { return channel_; }

    // --- unjoined cuts -------------------------------------------------------------------------
    const UnjoinedCuts& getUnjoinedCuts() const noexcept { return cuts_; }
    // Each answers whether that changed the list (or its flags).
    bool addCut(const ce_handle& handle, unsigned flags = 0);
    bool deleteCut(const ce_handle& handle);
    bool toggleCut(const ce_handle& handle, unsigned flags = 0);
    bool clearCuts();
    void setCuts(const UnjoinedCuts& cuts);

    // --- segments, by the event index of their in point ----------------------------------------
    // In ascending order.
    std::vector<std::uint32_t> getSelectedSegments() const;
    bool isSegmentSelected(std::uint32_t inEvent) const noexcept;
    bool anySegments() const noexcept { return !segments_.empty(); }
    // False when that changes nothing, or when no segment begins at that event.
    bool selectSegment(std::uint32_t inEvent, bool on);
    bool clearSegments();
    // The event indices joined by ",", and back; pieces that name no segment are dropped.
    LightweightString<char> segmentsAsString() const;
    void segmentsFromString(const LightweightString<char>& text);

    // --- following the edit --------------------------------------------------------------------
    // Bring the selection into line with the channel as it is now; what has gone is dropped. They
    // answer whether anything changed.
    bool verifyCuts();
    bool verifySegments();

private:
    struct Segment {
        std::uint32_t index = 0;
        ChannelEvent event;
    };
    Kv::Ptr<Cel> cel() const;
    void remember();

    EditPtr edit_;
    IdStamp channel_;
    UnjoinedCuts cuts_;
    IndexIndependentEventList snapshot_; // of cuts_, as they were last known to be good
    std::vector<Segment> segments_;      // ascending by index
};
