// `CelEventPair`: the two points of the segment at a time on one channel.
#pragma once

#include "platform/store/Cel.h"
#include "platform/store/EditPtr.h"

// Finds the segment of channel `index` of `edit` that holds a time and gives its two points.
// Holds the edit open.
class CUTROOM_API CelEventPair {
public:
    CelEventPair() = default;
    // Invalid when the channel does not exist or nothing lies at `seconds`.
    CelEventPair(const EditPtr& edit, int index, double seconds);
    CelEventPair(const EditPtr& edit, const IdStamp& channel, double seconds);

    bool valid() const noexcept { return in_.valid() && out_.valid(); }
    const ce_handle& first() const noexcept { return in_; }
    const ce_handle& second() const noexcept { return out_; }
    const EditPtr& getEdit() const noexcept { return edit_; }
    const IdStamp& getChannel() const noexcept { return channel_; }

    Cookie getStripCookie() const;
    // Gives both points the material `strip`. Nothing when invalid.
    void setStripCookie(const Cookie& strip);

private:
    EditPtr edit_;
    IdStamp channel_;
    ce_handle in_;
    ce_handle out_;
};
