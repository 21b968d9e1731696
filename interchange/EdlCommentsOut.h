// The comments below the events of an edit list.
#pragma once

#include "interchange/EdlEventsOut.h"
#include "interchange/EdlReels.h"

#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// The lines below an event, whole: names of clips and effects, the reel in full, the file, and what
// else the list that it was read from said there. `outgoing` is what was read of the outgoing side
// of its transition and still holds; empty for none.
std::vector<std::string> edlCommentsOf(const EdlEventOut& event, std::string_view outgoing,
                                       EdlReels& reels);

// The lines above the first event: what the list that it was read from said there.
std::vector<std::string> edlHeaderOf(const Timeline& timeline);

} // namespace cutroom
