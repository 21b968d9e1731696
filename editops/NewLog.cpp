#include "editops/NewLog.h"

#include "editops/CopyMetadata.h"
#include "editops/UnfinishedEdit.h"
#include "platform/store/Edit.h"
#include "platform/store/Editor.h"

namespace cutroom {

EditModifier buildLog(const EditModule& source, eLogType type, const Cookie& cookie) {
    const EditPtr& edit = source.getEdit();
    UnfinishedEdit log(EditManager::instance().makeNewEdit(
        cookie.valid() ? cookie : makeNewEditCookie(), 0, 0, 0, edit->getFrameRate()));
    if (!log)
        return {};
    log->setLogType(type);
    const TimeRange region = source.getMarkedRegion(); // of what is selected
    EditModule whole = source;
    whole.selectAll();
    whole.markAllAt(region, true);
    EditModule target{EditPtr(log.get())};
    if (!Editor::apply(whole, target, kEditRebuild, 0).ok())
        return {};
    copyDetails(edit, log.get(), region.getStart());
    log->setName(edit->getName());
    log->addModification(kModMetadata, false);
    return log.finish();
}

} // namespace cutroom
