// Where the children of an OTIO track lie when they are written: as they were written before as
// long as that leads to the same frames, else exactly where the timeline has them.
#pragma once

#include "interchange/OtioMarkers.h"
#include "interchange/Timeline.h"

#include <vector>

namespace cutroom::otio {

// A child of a track. Times are not rounded to frames: a reader adds up exactly these.
struct Child {
    const Item* item = nullptr; // null: a gap for a hole between items
    Flicks start = 0;           // in the time of the timeline
    Flicks duration = 0;
    Flicks sourceStart = 0; // of a transition its in offset
    RateRead rate;          // to write times in
    bool asWritten = false; // `item->range` still holds, or, when that is empty, no range at all
    std::vector<const Marker*> markers;

    bool isTransition() const { return item && item->type == ItemType::transition; }
    Span span() const { return {start, duration}; }
};

struct LaidTrack {
    const Track* track = nullptr;
    Flicks duration = 0;
    Flicks before = 0; // length that a transition at the head adds before the first item
    std::vector<Child> children;
    std::vector<const Marker*> markers;
};

// How a marker is written.
struct MarkerTimes {
    bool asWritten = false;
    Span range; // in the time of its owner, when not as written
    RateRead rate;
};

struct LaidStack {
    std::vector<LaidTrack> tracks;
    std::vector<const Marker*> markers;
    std::vector<MarkerTimes> times; // one for each marker of the timeline, in their order
    std::size_t outside = 0;        // markers that lie outside of the timeline
    std::size_t shortened = 0;      // transitions longer than what lies beside them
};

// Lays out a timeline's tracks, and gives each of its markers the owner that it had while that
// still lies beneath it; markers of nested things are written with those and left out here.
LaidStack layOut(const Timeline& timeline);

} // namespace cutroom::otio
