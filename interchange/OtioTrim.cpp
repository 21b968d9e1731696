#include "interchange/OtioComposition.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cutroom::otio {

namespace {

// Cuts an item that begins at its `start` to [0, length]; false when nothing of it lies there.
bool trimItem(Item& item, Flicks length) {
    if (item.type == ItemType::transition) {
        const Flicks cut = item.cut();
        if (cut < 0 || cut > length)
            return false;
        item.inOffset = std::min(item.inOffset, cut);
        item.outOffset = std::min(item.outOffset, length - cut);
        item.start = cut - item.inOffset;
        item.duration = item.inOffset + item.outOffset;
        return true;
    }
    const bool outside = item.duration > 0 ? item.end() <= 0 || item.start >= length
                                           : item.start < 0 || item.start > length;
    if (outside)
        return false;
    const Flicks head = std::max<Flicks>(0, -item.start);
    const Flicks tail = std::max<Flicks>(0, item.end() - length);
    item.start += head;
    item.duration -= head + tail;
    // A backward clip shows the end of its range first.
    const Flicks skipped = item.speed < 0 ? tail : head;
    item.sourceStart +=
        std::llround(static_cast<double>(skipped) * std::min(std::abs(item.speed), 1e3));
    return true;
}

// The same for a marker, whose owner may have lost its head.
bool trimMarker(PendingMarker& pending, Flicks length) {
    if (pending.placed)
        return pending.marker.start >= 0 && pending.marker.start <= length;
    Span& owner = pending.owner;
    if (owner.end() < 0 || owner.start > length)
        return false;
    const Flicks head = std::max<Flicks>(0, -owner.start);
    const Flicks tail = std::max<Flicks>(0, owner.end() - length);
    owner.start += head;
    owner.duration -= head + tail;
    pending.ownerSource += head;
    return true;
}

} // namespace

void moveMarkers(std::vector<PendingMarker>& markers, std::size_t first, Flicks by) {
    for (std::size_t i = first; i < markers.size(); ++i) {
        markers[i].owner.start += by;
        if (markers[i].placed)
            markers[i].marker.start += by;
    }
}

std::size_t trimTo(const Span& range, std::vector<Item>& items,
                   std::vector<PendingMarker>& markers) {
    const std::size_t before = items.size();
    std::erase_if(items, [&](Item& item) {
        item.start -= range.start;
        return !trimItem(item, range.duration);
    });
    moveMarkers(markers, 0, -range.start);
    std::erase_if(markers,
                  [&](PendingMarker& pending) { return !trimMarker(pending, range.duration); });
    return before - items.size();
}

} // namespace cutroom::otio
