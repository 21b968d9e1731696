// Stacks and tracks of an OTIO file, laid out on one timeline.
#pragma once

#include "interchange/OtioDocument.h"
#include "interchange/OtioMarkers.h"

#include <string>
#include <vector>

namespace cutroom::otio {

// What reading one track finds beside its items: its markers, and the rates in which its lengths
// are written.
struct Found {
    std::vector<PendingMarker> markers;
    std::vector<RateRead> rates;
};

// A timeline of an object at the root of a file, or where it is nested: a Stack gives its tracks,
// anything else one track. It is trimmed to its own range, starts at 0, has its rate and its
// markers at their places; its times are exact, not yet on frames. `owner` is the path of the
// object for its markers. `start` is the global start time, or null.
Timeline readComposition(Document& document, const Json& object, const Place& place,
                         const std::string& owner, const Time* start);

// Reads a track's children into `track`, trimmed to its range and moved to begin at 0. What it
// nests goes to `timeline.nested`.
void readTrack(Document& document, const Json& object, const Place& place, const std::string& owner,
               Timeline& timeline, Track& track, Found& found);

// Reads one clip, gap, nested composition or unknown thing, and its markers, as beginning at 0.
Item readItem(Document& document, const Json& object, const Place& place, const std::string& owner,
              Timeline& timeline, Found& found);

// A transition around a cut at 0.
Item readTransition(Document& document, const Json& object, const Place& place);

// Cuts what lies outside `range` off items and markers, and moves the rest so that the range begins
// at 0. Gives the number of items that lay outside.
std::size_t trimTo(const Span& range, std::vector<Item>& items,
                   std::vector<PendingMarker>& markers);

// Moves markers from `first` on, and their owners.
void moveMarkers(std::vector<PendingMarker>& markers, std::size_t first, Flicks by);

// Tells whether a start is meant as a drop-frame label: it is a whole minute when counted in drop
// frame, and is not when counted without.
bool meansDropFrame(std::int64_t startFrame, const Kv::FrameRate& rate);

// The rate of a timeline whose tracks have these rates: the start's where one of them has it, else
// the highest on the first picture track. Rates of samples and media ticks count for nothing; with
// no other, the one at which most cuts lie on frames is taken and `assumed` set.
RateRead chooseRate(const std::vector<Found>& found, const Timeline& timeline, const Time* start,
                    bool& assumed);

} // namespace cutroom::otio
