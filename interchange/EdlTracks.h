// Lays the events of an edit list on tracks.
#pragma once

#include "interchange/EdlList.h"
#include "interchange/EdlTiming.h"
#include "interchange/Timeline.h"

#include <string>
#include <vector>

namespace cutroom {

// One channel that an event's channel text names.
struct EdlChannel {
    TrackKind kind = TrackKind::video;
    int number = 1;
    std::string name; // "V", "A1", or the text itself when it names nothing known

    friend bool operator<(const EdlChannel& a, const EdlChannel& b) {
        if (a.kind != b.kind)
            return a.kind < b.kind;
        return a.number != b.number ? a.number < b.number : a.name < b.name;
    }
};

// How "A12" is meant: track 12, or tracks 1 and 2. The other channels of the list tell.
enum class EdlDigits { oneNumber, oneTrackEach };
EdlDigits audioDigits(const EdlList& list);

// The channels of "V", "A2", "AA", "A34", "B", "AA/V", "A1234V", "NONE" and the like, with those
// that AUD lines added. Never empty.
std::vector<EdlChannel> channelsOf(const EdlEvent& event, EdlDigits digits);

// Lays all events, each on the tracks of its channels; events that overlap go to further tracks of
// the channel. False when that takes more than 512 tracks or a million items.
bool layEvents(const EdlList& list, const EdlClock& clock, const EdlPlaces& places,
               Timeline& timeline);

// The item that an event becomes, at its place; without transition.
Item edlItem(const EdlEvent& event, const EdlPlace& place, std::int64_t first,
             const EdlClock& clock);

// What a transition keeps of the line of its outgoing side; `other`: that is not the clip before
// it.
std::string outgoingMetadata(const EdlEvent& outgoing, const EdlEvent& transition, bool other);

// Keeps with `item` what the list said of `rest`, an item that becomes part of it.
void keepContinuation(Item& item, const Item& rest);

} // namespace cutroom
