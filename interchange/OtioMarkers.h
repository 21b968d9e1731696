// Markers of OTIO objects, and the three habits of writing their places.
#pragma once

#include "interchange/OtioDocument.h"

#include <vector>

namespace cutroom::otio {

// A marker on its way to its timeline. Until it is placed, `owner` is where its owner lies in the
// time of the composition being read, and `ownerSource` where the owner's own time begins.
struct PendingMarker {
    Marker marker;
    Span owner;
    Flicks ownerSource = 0;
    bool ofItem = false; // of a clip or gap, not of a track or stack
    bool placed = false; // inside a nested composition, which has placed it
};

// The markers of `object`, with `owner` as their owner's path.
std::vector<PendingMarker> readMarkers(Document& document, const Json& object, const Place& place,
                                       const std::string& owner);

// How markers were found to be placed.
struct PlaceCounts {
    std::size_t outside = 0; // fit in no way
    std::size_t byHabit = 0; // not counted in the time of what they mark
};

// Decides for each marker by which habit its place is written, as a reader would, from `written`
// and the owner alone. Places are never negative. Of `timeline` only duration and start label are
// used.
PlaceCounts decidePlaces(std::vector<PendingMarker>& pending, const Timeline& timeline);

// Decides in the same way, and puts all markers into `timeline`, whose duration and start label are
// known. Warns of those that fit in no way.
void placeMarkers(Document& document, std::vector<PendingMarker> pending, Timeline& timeline);

} // namespace cutroom::otio
