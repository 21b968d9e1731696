// Which tracks of a timeline go into an edit list.
#pragma once

#include "interchange/Timeline.h"
#include "platform/base/Status.h"

#include <string>
#include <vector>

namespace cutroom {

// The numbers of the tracks: that of `wanted` ("V2", "A1", or its own name; a picture track with
// all sound, a sound track alone), of all of them when it is empty. `left` counts those with clips
// of kinds that a list does not have. Fails when there is no such track, and when several picture
// tracks would have to go together that were not read from an edit list.
Result<std::vector<int>> edlTracksFor(const Timeline& timeline, const std::string& wanted,
                                      long& left);

} // namespace cutroom
