#include "editops/CueRegions.h"

#include "platform/store/Edit.h"

namespace cutroom {

std::vector<NamedRegion> regionsOf(const std::vector<Cue>& cues) {
    std::vector<NamedRegion> regions;
    regions.reserve(cues.size());
    for (std::size_t i = 0; i < cues.size(); ++i) {
        const Cue& cue = cues[i];
        if (cue.hasEnd())
            regions.push_back({cue.getName(), cue.getRange()});
        else if (i + 1 < cues.size())
            regions.push_back({cue.getName(), {cue.getTime(), cues[i + 1].getTime()}});
    }
    return regions;
}

} // namespace cutroom

std::vector<NamedRegion> getRegionsFromCues(const EditPtr& edit) {
    return edit ? cutroom::regionsOf(edit->getCues().cues()) : std::vector<NamedRegion>();
}
