#include "editops/RangeCopy.h"

#include "editops/CopiedChannels.h"
#include "editops/CopyKinds.h"
#include "editops/CopyMetadata.h"
#include "editops/CopyNames.h"
#include "editops/EditCopy.h"
#include "editops/NewLog.h"
#include "editops/UnfinishedEdit.h"
#include "editops/WholeCopy.h"
#include "platform/prefs/Configuration.h"
#include "platform/store/Edit.h"
#include "platform/store/Editor.h"

#include <cmath>

using cutroom::UnfinishedEdit;

namespace {

// A time less than a tenth of a frame below a frame counts as that frame: enough for the error of a
// sum of times, too little to take a frame that was not meant.
constexpr double kGridTolerance = 0.1;

double onGrid(double seconds, double resolution) {
    return std::floor(seconds / resolution + kGridTolerance) * resolution;
}

bool canMake(eLogType type) {
    return type == kLogTypeEdit || type == kLogTypeSyncGhost || type == kLogTypePrintGhost ||
           type == kLogTypeSubclip;
}

void showEveryCue(Edit& edit) {
    CueList cues = edit.getCues();
    for (std::size_t i = 0; i < cues.getNumCuePoints(); ++i) {
        Cue cue = cues.getCuePoint(i);
        cue.setFlags(cue.getFlags() | kCueVisible);
        cues.setCuePoint(i, cue);
    }
    edit.setCues(cues, false);
}

// What every log takes and an edit does not.
void describeLog(const Edit& source, Edit& log) {
    if (!source.isAudioOnlyRecording())
        log.setVideoMetadata(source.getVideoMetadata());
    log.setAudioMetadata(source.getAudioMetadata());
    log.setMediaLocations(source.getMediaLocations());
    log.setConfig(cutroom::kParentKey, source.getCookie().asString(true));
}

void makeSyncGhost(const Edit& source, EditModifier& log, const LightweightString<wchar_t>& name) {
    log->make_original(false, false);
    edcopy_make_sync_ghost(log, name, source.getVideoTimecodeLabel().get_abs_posn() == 0);
    log->celCuesOn();
    showEveryCue(*log);
    log->setConfig("SHOW_CEL_CUES", 0);
}

// A subclip of a subclip shows its material directly, in one layer.
bool traceToTop(EditModifier& log) {
    if (cutroom::configInt("trace_top_level_subclips", 1) == 0)
        return true;
    return cutroom::flattenEdit(log, EditModule{EditPtr(log)}, 3, 0).ok();
}

ResId suffixFor(eLogType type, ResId edit) {
    switch (type) {
    case kLogTypeEdit:
        return edit;
    case kLogTypeSyncGhost:
        return cutroom::kResSyncGhost;
    case kLogTypePrintGhost:
        return cutroom::kResPrintGhost;
    default:
        return cutroom::kResSubclip;
    }
}

// An edit keeps what the module selects; the number of channels tells whether that is all.
void keepSelected(EditModifier& copy, const EditModule& source) {
    const EditPtr& edit = source.getEdit();
    if (source.getNumSelectedChans() == edit->getNumChans(kChanVideo | kChanAudio))
        return;
    const int channels = edit->getNumChans();
    if (channels != 0 && channels == copy->getNumChans())
        cutroom::removeUnselected(copy, source, kChanAllTypes);
}

} // namespace

EditModifier copyRange(const EditModule& source, eLogType type, bool wholeEdit) {
    if (!cutroom::opens(source.getEdit()))
        return {};
    if (wholeEdit && type == kLogTypeEdit)
        return copyEdit(source, makeEditNameSuffix(cutroom::kResCopy), false);
    const ResId suffix = suffixFor(type, cutroom::kResSequenceSection);
    EditModifier copy = makeNewLog(source, type, makeEditNameSuffix(suffix), Cookie());
    if (!copy)
        return copy;
    copy->rebuildCachedLabels();
    if (type == kLogTypeEdit)
        keepSelected(copy, source);
    return copy;
}

EditModifier edcopy_general_copy(const Cookie& source, eLogType type) {
    const EditPtr edit(source);
    if (!edit)
        return {};
    const bool named = canMake(type);
    const ResId suffix = suffixFor(type, cutroom::kResSequenceCopy);
    return edcopy_general_copy_range(
        source, type, named ? cutroom::toLower(makeEditNameSuffix(suffix)) : std::wstring(),
        edit->getStartTime(), edit->getEndTime());
}

EditModifier edcopy_general_copy_range(const Cookie& source, eLogType type,
                                       const LightweightString<wchar_t>& name, double t1,
                                       double t2) {
    EditModule module(source);
    if (!module.valid())
        return {};
    const double resolution = module.getEdit()->getCelResolution();
    const double a = onGrid(t1, resolution);
    const double b = onGrid(t2, resolution);
    module.markAllAt(TimeRange(std::min(a, b), std::max(a, b)), true);
    return makeNewLog(module, type, name, Cookie());
}

EditModifier edcopy_general_copy_range(const Cookie&, eLogType type,
                                       const LightweightString<wchar_t>& name,
                                       const EditModule& source) {
    return makeNewLog(source, type, name, Cookie());
}

EditModifier edcopy_general_copy_range(const Cookie&, const Cookie& newLog, eLogType type,
                                       const LightweightString<wchar_t>& name,
                                       const EditModule& source) {
    return makeNewLog(source, type, name, newLog);
}

EditModifier makeNewLog(const EditModule& source, eLogType type,
                        const LightweightString<wchar_t>& name, const Cookie& newLog) {
    const EditPtr& edit = source.getEdit();
    if (!edit || !canMake(type))
        return {};
    UnfinishedEdit log(cutroom::buildLog(source, type, newLog));
    if (!log)
        return {};
    const auto channels = cutroom::pairChannels(edit, log.get());
    const double offset = -source.getMarkedRegion().getStart();
    if (type == kLogTypeEdit) {
        log->make_original(false, false);
        edit_modify_name(log.get(), name);
        cutroom::copyCues(edit, log.get(), offset, channels);
        return log.finish();
    }
    if (type == kLogTypeSubclip && edit->getLogType() == kLogTypeSubclip && !traceToTop(log.get()))
        return {};
    describeLog(*edit, *log.get());
    if (type == kLogTypeSyncGhost) {
        makeSyncGhost(*edit, log.get(), name);
    } else if (type == kLogTypePrintGhost) {
        log->make_original(false, false);
        edcopy_make_print_ghost(log.get(), name);
    } else {
        edcopy_make_subclip(log.get(), name);
        cutroom::copyCues(edit, log.get(), offset, channels);
    }
    return log.finish();
}
