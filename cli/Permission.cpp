#include "cli/Permission.h"

#include "platform/base/Strings.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/Edit.h"

namespace cutroom::cli {

Status mayChange(const EditPtr& edit) {
    const std::string name = toUtf8(edit->getName());
    if (edit->isReadOnly())
        return {StatusCode::failed, name, "the edit is read-only"};
    return marksAllow(edit.getCookie(), name);
}

Status marksAllow(const Cookie& edit, const std::string& name) {
    const PermissionsManager& permissions = PermissionsManager::instance();
    if (permissions.isProtected(edit))
        return {StatusCode::failed, name,
                "the edit is write-protected; `permit free` in a session ends that"};
    if (permissions.isReadOnly(edit))
        return {StatusCode::failed, name,
                "the edit is locked by " + permissions.getLockHolder(edit)};
    return {};
}

} // namespace cutroom::cli
