#include "editops/WholeCopy.h"

#include "editops/CopyMetadata.h"
#include "editops/RangeCopy.h"
#include "platform/base/Log.h"
#include "platform/store/Edit.h"

namespace cutroom {

bool opens(const EditPtr& edit) { return edit && EditPtr(edit.getCookie()); }

EditModifier beginCopy(EditModifier copy) {
    if (!copy) {
        LogBoth("copyEdit() : failed to open copy");
        return copy;
    }
    copy->setReadOnly(false);
    copy->setCreationDetails();
    return copy;
}

EditModifier beginWholeCopy(const EditPtr& source) {
    if (!opens(source)) {
        LogBoth("copyEdit() : Unable to open source edit\n");
        return {};
    }
    return beginCopy(edcopy_general_copy_range(source.getCookie(), kLogTypeEdit, {},
                                               source->getStartTime(), source->getEndTime()));
}

void copySyncErrors(const EditPtr& source, const EditPtr& copy) {
    for (const auto& [from, to] : pairChannels(source, copy))
        copy->setSyncError(to, source->getSyncError(from));
}

EditModifier finishWholeCopy(UnfinishedEdit& copy, const LightweightString<wchar_t>& name) {
    edit_modify_name(copy.get(), name);
    copy->addModification(kModMetadata, true);
    return copy.finish();
}

} // namespace cutroom
