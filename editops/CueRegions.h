// Cues as regions: the stretches of an edit that its markers name.
#pragma once

#include "platform/base/NumRange.h"
#include "platform/base/Strings.h"
#include "platform/store/Cue.h"
#include "platform/store/EditPtr.h"

#include <vector>

// One region of an edit: the name of the cue that made it, and its seconds. A value.
struct CUTROOM_API NamedRegion {
    LightweightString<wchar_t> name;
    TimeRange range;

    friend bool operator==(const NamedRegion&, const NamedRegion&) = default;
};

// The regions of the edit's cues in the order of the list; empty without edit. Any thread.
//
//   cues     |A      |B  [C====]    |D
//   regions  [A=====][B=][C====]            D, a last point cue, makes none
//
// A cue with an end is its range; a point cue reaches to the start of the cue after it, so two at
// one time give a region of no length. Ends that lie the wrong way round are put in order.
CUTROOM_API std::vector<NamedRegion> getRegionsFromCues(const EditPtr& edit);

namespace cutroom {

// The same for cues in any order, each point cue reaching to the next of the list.
CUTROOM_API std::vector<NamedRegion> regionsOf(const std::vector<Cue>& cues);

} // namespace cutroom
