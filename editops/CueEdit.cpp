#include "editops/CueEdit.h"

#include "editops/CueRegions.h"
#include "editops/UnfinishedEdit.h"
#include "editops/basics/EmptyEdit.h"
#include "platform/host/StringTable.h"
#include "platform/store/Edit.h"
#include "platform/store/EditModule.h"
#include "platform/store/Editor.h"

#include <algorithm>
#include <limits>

namespace {

unsigned char channels(const EditPtr& edit, EditChanType type) {
    constexpr int kMost = std::numeric_limits<unsigned char>::max();
    return static_cast<unsigned char>(std::min(edit->getNumChans(type), kMost));
}

// Lays the regions into `made` one after the other. One that cannot be laid (it has no length) is
// passed over.
void layRegions(const EditPtr& source, const EditPtr& made,
                const std::vector<NamedRegion>& regions) {
    EditModule from(source);
    EditModule into(made.getCookie());
    autoInitAudioLevelsTracks(into);
    for (const NamedRegion& region : regions) {
        from.markAllAt(region.range, true);
        if (Editor::apply(from, into, kEditOverlay, 0))
            into.setCurrentTime(made->getEndTime() - made->getStartTime());
    }
}

} // namespace

EditModifier makeEditFromCues(const EditPtr& source, const std::vector<Cue>& cues,
                              bool alreadyImported) {
    if (!source)
        return {};
    const auto name =
        source->getName() + paddedResourceStrW(cutroom::kResEditFromCues, L" (", L")");
    cutroom::UnfinishedEdit made(createEmptyEdit(Cookie(), name, channels(source, kChanVideo),
                                                 channels(source, kChanAudio), 0,
                                                 source->getFrameRate()));
    if (!made)
        return {};
    if (!alreadyImported)
        EditModifier(source, "import")->setImported(true);
    made->setVideoMetadata(source->getVideoMetadata());
    made->setImported(false);
    layRegions(source, made.get(), cutroom::regionsOf(cues));
    return made.finish();
}
