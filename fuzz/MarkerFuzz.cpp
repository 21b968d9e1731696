// Any bytes as a list of markers, the first one choosing the format: what is read lies on the edit,
// and is read and written again as the same table.
#include "editops/basics/EmptyEdit.h"
#include "export/AssetMetadataCSVExporter.h"
#include "interchange/MarkerImport.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

using namespace cutroom;

// An edit of an hour from 10:00:00:00, for all inputs.
const EditPtr& programme() {
    static EmbeddedHost host{EmbeddedHost::repeatable()};
    static const EditPtr edit = [] {
        const EditModifier made =
            createEmptyEdit(Cookie(), L"Reel", 1, 0, 3600, Kv::FrameRate(30000, 1001));
        made->addLabel(EditLabel(kLabelVideoTimecode, {2, 1}, {{30000, 1001}, true}, 1'078'920));
        return EditPtr(made);
    }();
    return edit;
}

std::string tableOf(const EditPtr& edit, const CueList& cues) {
    return AssetMetadataCSVExporter().getText(edit, cues.cues()).value();
}

// Half a day behind the start a timecode is one before it.
bool reachesFar(const CueList& cues) {
    return std::any_of(cues.cues().begin(), cues.cues().end(), [](const Cue& cue) {
        return std::max(cue.getTime(), cue.hasEnd() ? cue.getEndTime() : 0) > 43'200;
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const EditPtr& edit = programme();
    const MarkerTarget target =
        markerTarget(edit, data[0] & 4 ? MarkerClock::media : MarkerClock::timecode);
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto read = readMarkers(bytes, "fuzz", static_cast<MarkerFormat>(data[0] & 3), target);
    if (!read.ok())
        return 0;
    const MarkerPlan plan = planMarkers({}, *read, target.places, MarkerConflict::both);
    if (plan.added != read->markers.size() || plan.cues.getNumCuePoints() != plan.added)
        __builtin_trap();
    for (const Cue& cue : plan.cues.cues())
        if (cue.getTime() < 0 || (cue.hasEnd() && cue.getEndTime() < cue.getTime()))
            __builtin_trap();
    const std::string once = tableOf(edit, plan.cues);
    const auto again = readMarkers(once, "table", MarkerFormat::csv, target);
    if (!again.ok() && reachesFar(plan.cues))
        return 0;
    if (!again.ok() || again->markers.size() != plan.added)
        __builtin_trap();
    const MarkerPlan back = planMarkers({}, *again, target.places, MarkerConflict::both);
    if (tableOf(edit, back.cues) != once)
        __builtin_trap();
    return 0;
}
