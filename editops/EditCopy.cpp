#include "editops/EditCopy.h"

#include "editops/CopiedChannels.h"
#include "editops/CopyKinds.h"
#include "editops/CopyNames.h"
#include "editops/FileCopy.h"
#include "editops/UnfinishedEdit.h"
#include "editops/WholeCopy.h"
#include "platform/base/Log.h"
#include "platform/store/Edit.h"
#include "platform/store/Editor.h"

using cutroom::UnfinishedEdit;

namespace {

EditModule wholeOf(const Cookie& edit) {
    EditModule module(edit);
    module.selectAll();
    return module;
}

bool isCopiedAsFile(const EditPtr& edit) {
    return cutroom::opens(edit) &&
           (edit->get_original_material() != 0 || edit->getLogType() == kLogTypeFileCopy);
}

} // namespace

EditModifier copyEdit(const EditModule& source, const LightweightString<wchar_t>& name,
                      bool stripCookies) {
    const EditPtr& edit = source.getEdit();
    UnfinishedEdit copy(isCopiedAsFile(edit) ? cutroom::beginCopy(cutroom::copyFileOfEdit(edit))
                                             : cutroom::beginWholeCopy(edit));
    if (!copy)
        return {};
    if (copy->get_original_material() == 0)
        cutroom::copySyncErrors(edit, copy.get());
    else if (stripCookies)
        cutroom::makeStripCookies(copy.get());
    if (source.getNumSelectedChans() != edit->getNumChans())
        cutroom::removeUnselected(copy.get(), source, kChanAllTypes);
    return cutroom::finishWholeCopy(copy, name);
}

EditModifier copySequenceEdit(const EditPtr& source, const LightweightString<wchar_t>& name) {
    UnfinishedEdit copy(cutroom::beginWholeCopy(source));
    if (!copy)
        return {};
    cutroom::copySyncErrors(source, copy.get());
    return cutroom::finishWholeCopy(copy, name);
}

EditModifier edcopy_basic_copy(const Cookie& source) {
    EditModifier copy = copyEdit(wholeOf(source), {}, false);
    if (copy)
        copy->removeConfig("CLIPBOARD");
    return copy;
}

EditModifier flatten(const EditModule& source) {
    if (!cutroom::opens(source.getEdit()))
        return {};
    UnfinishedEdit copy(
        copyEdit(wholeOf(source.getEditID()), makeEditNameSuffix(cutroom::kResFlattened), false));
    if (!copy)
        return {};
    const std::wstring name = copy->getName();
    copy->setConfig(cutroom::kCopyKindKey, kCopyFlattened);
    copy->clear_cache_flags();
    copy->make_original(false, false);
    copy->setName(name);
    EditModule layers{EditPtr(copy.get())};
    layers.selectAll(false);
    for (const IdStamp& channel : source.getSelectedChans(kChanVideo | kChanAudio))
        layers.selectChan(copy->getId(source.getEdit()->getIdx(channel)), true);
    if (!cutroom::flattenEdit(copy.get(), layers, 3, 0).ok())
        return {};
    return copy.finish();
}
