// Takes the markers of a file among those of an edit.
#pragma once

#include "interchange/MarkerFile.h"
#include "platform/store/Cue.h"

#include <cstddef>

namespace cutroom {

// What becomes of a marker of the file for which the edit has one of the same time and name (where
// the file gives no name: that shows the same text). Times are the same when they have one
// timecode.
enum class MarkerConflict {
    keep,    // the edit's stays, the file's is left out
    replace, // the edit's takes over what the file says, and keeps the rest of what it was
    both,    // the file's is added beside it
};

// The markers that an edit is to have.
struct MarkerPlan {
    CueList cues;
    std::size_t added = 0;
    std::size_t replaced = 0; // changed by it, too
    std::size_t kept = 0;     // because of a conflict, or because the file says the same
    std::size_t behind = 0;   // of the added ones, behind the edit's end

    bool changes() const noexcept { return added + replaced > 0; }
};

// Puts the file's markers among `cues`, each against at most one of them, equal ones first. Nothing
// of the edit changes: the caller sets the plan's cues as the edit's.
CUTROOM_API MarkerPlan planMarkers(const CueList& cues, const MarkerFile& file,
                                   const MarkerPlaces& places, MarkerConflict conflict);

} // namespace cutroom
