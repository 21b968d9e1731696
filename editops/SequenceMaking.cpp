#include "editops/SequenceMaking.h"

#include "editops/CopiedChannels.h"
#include "editops/WholeCopy.h"
#include "editops/basics/EmptyEdit.h"
#include "platform/host/StringTable.h"
#include "platform/store/Edit.h"
#include "platform/store/Editor.h"

#include <algorithm>

using cutroom::UnfinishedEdit;

namespace {

// Channels of other sub-types (a right-eye picture, say) are added as such when the clip is laid.
unsigned char selectedOf(const EditModule& clip, EditChanType type) {
    return static_cast<unsigned char>(std::min(clip.getNumSelectedChans(type, kSubNormal), 255));
}

// The clip as it stands in the project.
EditModule inProject(const EditModule& clip) {
    const EditPtr added = EditManager::instance().addToProject(clip.getEdit());
    if (!added || added == clip.getEdit())
        return clip;
    EditModule module(added);
    module.makeSimilarTrackSelections(clip);
    module.makeSimilarMarks(clip, 0);
    return module;
}

} // namespace

EditModifier makeSequenceFromClip(const EditModule& clip) {
    const EditPtr& edit = clip.getEdit();
    if (!cutroom::opens(edit))
        return {};
    const auto name = edit->getName() + paddedResourceStrW(cutroom::kResSequenceCopy, L" (", L")");
    UnfinishedEdit sequence(createEmptyEdit(makeNewEditCookie(), name, selectedOf(clip, kChanVideo),
                                            selectedOf(clip, kChanAudio), 0, Kv::FrameRate()));
    if (!sequence)
        return {};
    EditModule target{EditPtr(sequence.get())};
    const EditModule source = edit->isImported() ? clip : inProject(clip);
    if (!Editor::apply(source, target, kEditRebuild, 0).ok())
        return {};
    return sequence.finish();
}

EditModifier makeSequenceFromSource(const EditModule& source,
                                    const LightweightString<wchar_t>& name) {
    const EditPtr& edit = source.getEdit();
    UnfinishedEdit copy(cutroom::beginWholeCopy(edit));
    if (!copy)
        return {};
    if (edit->getLogType() == kLogTypeEdit)
        cutroom::copySyncErrors(edit, copy.get());
    if (source.getNumSelectedChans() != edit->getNumChans())
        cutroom::removeUnselected(copy.get(), source, kChanVideo | kChanAudio);
    return cutroom::finishWholeCopy(copy, name);
}
