// The events that an edit list will hold, before they become lines.
#pragma once

#include "interchange/EdlTracks.h"
#include "interchange/Timeline.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// One event: an item on its channels, with the transition that leads to it. Frames count from the
// start of the timeline; a transition begins at `recordIn`.
struct EdlEventOut {
    const Item* item = nullptr; // null: black
    const Item* transition = nullptr;
    const Item* outgoing = nullptr; // the item that it leads away from; null: black
    std::int64_t recordIn = 0;
    std::int64_t recordOut = 0;
    std::int64_t transitionFrames = 0;
    std::set<EdlChannel> channels;
    std::string_view facts; // what the edit list that it was read from said of it; empty for none
    bool goesOn = false;    // the next event is the rest of its clip

    std::int64_t length() const noexcept { return recordOut - recordIn; }
};

// What could not be listed as it is.
struct EdlLosses {
    long tracks = 0;
    long disabled = 0;
    long nested = 0;
    long effects = 0;
    long transitions = 0; // of kinds that a list does not have
    long shortened = 0;   // transitions
    long wrapped = 0;     // sources that start before 00:00:00:00 or a day later
    long rates = 0;       // sources at another rate than the record
    long reels = 0;       // shortened
    long early = 0;       // markers before 00:00:00:00
    long lasting = 0;     // markers
    long colours = 0;     // of markers, not known
    long fields = 0;      // of markers

    // Each kind that there is, with its number.
    std::vector<std::string> text() const;
};

// The events of the tracks with these numbers, by record time. Events of several tracks that agree
// in everything are one.
std::vector<EdlEventOut> edlEventsOf(const Timeline& timeline, const std::vector<int>& tracks,
                                     EdlLosses& losses);

// What the edit list that an item was read from said of its event, a member of the item's metadata;
// empty for others.
std::string_view edlFacts(const Item& item);
// For a clip that was read from two events: what the list said of the second one.
std::string_view edlRest(std::string_view facts);
// Tells whether the outgoing side of a transition, as it was read, names another clip than the one
// before it.
bool edlIsOther(std::string_view outgoing);

} // namespace cutroom
