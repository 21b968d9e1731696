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

// Decides for each marker how its place is written and puts all into `timeline`, whose duration
// and start label are known; places are never negative. Warns of those that fit in no way.
void placeMarkers(Document& document, const std::vector<PendingMarker>& pending,
                  Timeline& timeline);

} // namespace cutroom::otio
