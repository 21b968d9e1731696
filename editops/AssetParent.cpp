#include "editops/AssetParent.h"

#include "bins/AssetAssociationGroupManager.h"
#include "editops/CopyKinds.h"
#include "platform/base/Log.h"
#include "platform/host/StringTable.h"
#include "platform/store/Edit.h"

namespace {

void joinGroupsOf(const Cookie& parent, const Cookie& copy) {
    AssetAssociationGroupManager& manager = AssetAssociationGroupManager::instance();
    const auto groups = manager.findGroupsContainingAsset(parent, true);
    if (groups.empty())
        manager.createGroup(resourceStrW(cutroom::kResAssociationGroup), {parent, copy});
    for (const Kv::Ptr<AssetAssociationGroup>& group : groups) {
        group->add(copy);
        if (const cutroom::Status saved = group->save(); !saved)
            LogBoth("%s\n", saved.text().c_str()); // the next flush tries again
    }
}

} // namespace

void setAssetParent(EditModifier& copy, const Cookie& parent) {
    if (!copy || parent.type() != 'E')
        return;
    copy->setConfig(cutroom::kParentKey, parent.asString(true));
    if (copy->getLogType() == kLogTypeEdit)
        joinGroupsOf(parent, copy.getCookie());
}
