#include "platform/store/ChannelEvent.h"

void ChannelEvent::quantise(const Kv::FrameRate& rate) noexcept {
    if (rate.valid())
        time = rate.frameToFlicks(rate.flicksToFrameNearest(time));
}

bool operator==(const ChannelEvent& a, const ChannelEvent& b) noexcept {
    return a.time == b.time && a.stripTime == b.stripTime && a.material == b.material &&
           a.speed == b.speed && a.effectGraph == b.effectGraph && a.detail == b.detail &&
           a.flags == b.flags;
}
