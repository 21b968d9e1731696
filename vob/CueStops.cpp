#include "vob/CueStops.h"

#include <algorithm>

namespace cutroom {

void CueStops::follow(const CueList& cues, std::uint64_t changeCount) {
    if (following_ && changeCount == changeCount_)
        return;
    following_ = false; // stays so when memory runs out
    for (std::vector<double>& times : times_)
        times.clear();
    for (const Cue& cue : cues.cues()) {
        if (!cue.hasFlag(kCueVisible))
            continue;
        std::vector<double>& times = times_[cue.hasFlag(kCueSecondKind) ? kSecond : kOrdinary];
        times.push_back(cue.getTime());
        if (cue.hasEnd())
            times.push_back(cue.getRange().getEnd());
    }
    for (std::vector<double>& times : times_)
        if (!std::is_sorted(times.begin(), times.end()))
            std::sort(times.begin(), times.end());
    changeCount_ = changeCount;
    following_ = true;
}

} // namespace cutroom
