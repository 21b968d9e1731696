#include "editops/CopyKinds.h"

#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

namespace {

void finish(EditModifier& copy, eCopyKind kind, const LightweightString<wchar_t>& name,
            bool keepLabels) {
    copy->make_original(true, keepLabels);
    edit_modify_name(copy, name);
    copy->setConfig(cutroom::kCopyKindKey, kind);
    copy->clear_cache_flags();
}

void finishWithoutDerived(EditModifier& copy, eCopyKind kind,
                          const LightweightString<wchar_t>& name, bool keepLabels) {
    if (!copy)
        return;
    copy->removeChans(kChanVideo, kSubDerived);
    finish(copy, kind, name, keepLabels);
}

} // namespace

void edcopy_make_clipsection(EditModifier& copy) {
    if (copy)
        finish(copy, kCopyClipSection, {}, false);
}

void edcopy_make_print_ghost(EditModifier& copy, const LightweightString<wchar_t>& name) {
    if (!copy)
        return;
    finish(copy, kCopyPrintGhost, name, false);
    copy->setVideoReelId(copy.getCookie().asString());
}

void edcopy_make_subclip(EditModifier& copy, const LightweightString<wchar_t>& name) {
    finishWithoutDerived(copy, kCopySubclip, name, false);
}

void edcopy_make_sync_ghost(EditModifier& copy, const LightweightString<wchar_t>& name,
                            bool keepLabels) {
    finishWithoutDerived(copy, kCopySyncGhost, name, keepLabels);
}
