#include "editops/WholeCopy.h"

#include "editops/RangeCopy.h"
#include "platform/base/Log.h"
#include "platform/store/Edit.h"

#include <algorithm>

namespace cutroom {

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
    if (!source) {
        LogBoth("copyEdit() : Unable to open source edit\n");
        return {};
    }
    return beginCopy(edcopy_general_copy_range(source.getCookie(), kLogTypeEdit, {},
                                               source->getStartTime(), source->getEndTime()));
}

void copySyncErrors(const Edit& source, Edit& copy) {
    const auto from = source.getChans();
    const auto to = copy.getChans();
    for (std::size_t i = 0; i < std::min(from.size(), to.size()); ++i)
        copy.setSyncError(to[i], source.getSyncError(from[i]));
}

EditModifier finishWholeCopy(UnfinishedEdit& copy, const LightweightString<wchar_t>& name) {
    edit_modify_name(copy.get(), name);
    copy->addModification(kModMetadata, true);
    return copy.finish();
}

} // namespace cutroom
