// Which tracks of a timeline go into an edit list.
#pragma once

#include "interchange/Timeline.h"
#include "platform/base/Status.h"

#include <string>
#include <vector>

namespace cutroom {

// The indices of the tracks to write. `wanted` names one ("V2", "A1", or the track's own name): a
// picture track, with which all sound goes, or a sound track alone. Empty: all tracks. Adds to
// `left` the number of tracks with clips that are of a kind an edit list cannot hold. Fails when
// there is no such track, and when several picture tracks would go together of which one was not
// read from an edit list.
Result<std::vector<int>> edlTracksFor(const Timeline& timeline, const std::string& wanted,
                                      long& left);

} // namespace cutroom
