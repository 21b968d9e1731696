// The channel column of an edit list.
#pragma once

#include "interchange/EdlEventsOut.h"
#include "interchange/EdlTracks.h"

#include <set>
#include <string>
#include <vector>

namespace cutroom {

// How a set of channels is named: the text of the column, and the sound channels that an AUD line
// below the event adds.
struct EdlChannelText {
    std::string text;
    std::vector<int> audio;
};

// What "A12" will mean to a reader of all these events.
EdlDigits edlDigitsOf(const std::vector<EdlEventOut>& events);

// Names `channels` (at least one): as `written` (may be empty) as long as that names no other
// channel, else as "V", "B", "AA/V", "A3" and so on.
EdlChannelText edlChannelText(const std::set<EdlChannel>& channels, const std::string& written,
                              EdlDigits digits);

} // namespace cutroom
