#include "bins/AssetAssociationGroupManager.h"

#include "bins/ContainerModifier.h"
#include "bins/DocumentManager.h"
#include "platform/host/ProcessLife.h"
#include "platform/project/ProjectLayout.h"

#include <map>

using cutroom::Status;

namespace {

using Group = AssetAssociationGroup;

std::vector<Kv::Ptr<Group>>
asGroups(const std::vector<Kv::Ptr<cutroom::DescribedContainer>>& containers) {
    std::vector<Kv::Ptr<Group>> groups;
    groups.reserve(containers.size());
    for (const auto& container : containers)
        groups.emplace_back(static_cast<Group*>(container.get()));
    return groups;
}

} // namespace

AssetAssociationGroupManager& AssetAssociationGroupManager::instance() {
    return cutroom::ProcessSingleton<AssetAssociationGroupManager>::get();
}

AssetAssociationGroupManager::AssetAssociationGroupManager()
    : DescribedContainerManager("asset groups", cutroom::kAssociationsFolder,
                                AssetAssociationGroup::getFileExtension()) {
    DocumentManager& documents = DocumentManager::instance();
    documents_ = documents.registerNotification(
        makeCallback(this, &AssetAssociationGroupManager::handleDocumentModifications),
        documents.changeMsgType());
}

AssetAssociationGroupManager::~AssetAssociationGroupManager() { letGo(); }

AssetAssociationGroupManager::ContainerPtr AssetAssociationGroupManager::makeEmpty() const {
    return Kv::makePtr<AssetAssociationGroup>();
}

bool AssetAssociationGroupManager::takes(const Cookie& id) const { return id.type() == 'G'; }

// --- making and finding --------------------------------------------------------------------------

Kv::Ptr<AssetAssociationGroup>
AssetAssociationGroupManager::createGroup(const LightweightString<wchar_t>& name,
                                          const std::vector<Cookie>& constituents,
                                          AssetAssociationGroup::eType type, const Cookie& id) {
    const auto group = Kv::makePtr<AssetAssociationGroup>(name, constituents, type);
    if (id.valid())
        group->setID(id);
    if (!addGroup(group))
        return {};
    group->addModifications(ContainerBase::kModCreated);
    return group;
}

bool AssetAssociationGroupManager::addGroup(const Kv::Ptr<AssetAssociationGroup>& group) {
    if (!group || !enter(group))
        return false;
    group->setDirty(true);
    return true;
}

Kv::Ptr<AssetAssociationGroup> AssetAssociationGroupManager::getGroup(const Cookie& id) const {
    return Kv::Ptr<Group>(static_cast<Group*>(find(id).get()));
}

std::vector<Kv::Ptr<AssetAssociationGroup>> AssetAssociationGroupManager::getGroups() const {
    return asGroups(all());
}

bool AssetAssociationGroupManager::isManaged(const Cookie& id) const { return find(id) != nullptr; }

std::vector<Kv::Ptr<AssetAssociationGroup>>
AssetAssociationGroupManager::findGroupsContainingAsset(const Cookie& asset,
                                                        bool userGroups) const {
    return userGroups ? asGroups(findByKey(asset.asString()))
                      : findGroupsContainingAsset(asset, AssetAssociationGroup::kVersionsGroup);
}

std::vector<Kv::Ptr<AssetAssociationGroup>>
AssetAssociationGroupManager::findGroupsContainingAsset(const Cookie& asset,
                                                        AssetAssociationGroup::eType type) const {
    auto groups = asGroups(findByKey(asset.asString()));
    std::erase_if(groups, [=](const Kv::Ptr<Group>& group) { return group->getType() != type; });
    return groups;
}

// --- going and saving ----------------------------------------------------------------------------

Status AssetAssociationGroupManager::removeGroup(const Kv::Ptr<AssetAssociationGroup>& group,
                                                 const LightweightString<char>& reason) {
    const Cookie id = group ? group->getID() : Cookie();
    if (!group || find(id) != group)
        return {cutroom::StatusCode::notFound, id.asString(), "is no group of the project"};
    return destroyAll({id}, reason);
}

Status AssetAssociationGroupManager::flushChanges() { return saveDirty(); }

// --- what it is told -----------------------------------------------------------------------------

void AssetAssociationGroupManager::handleGroupModification(
    const Cookie& id, const ContainerBase::Modifications& changes, LightweightString<char> reason) {
    issueNotification(Kv::makePtr<ContainerNotice>(id, changes, std::move(reason)));
}

void AssetAssociationGroupManager::handleLogsDeletion(const CookieVec& logs,
                                                      const LightweightString<char>& reason) {
    removeAssets(logs, reason);
}

void AssetAssociationGroupManager::handleDocumentModifications(const NotifyMsg& message) {
    const auto* const notice = message.getObjectAs<ContainerNotice>();
    if (notice && notice->destroyed())
        removeAssets(notice->subjects(), notice->reason());
}

void AssetAssociationGroupManager::removeAssets(const CookieVec& assets,
                                                const LightweightString<char>& reason) {
    std::map<Cookie, CookieVec> affected; // by group
    for (const Cookie& asset : assets)
        for (const Kv::Ptr<Group>& group : findGroupsContainingAsset(asset, true))
            affected[group->getID()].push_back(asset);
    for (const auto& [id, members] : affected) {
        const Kv::Ptr<Group> group = getGroup(id);
        if (!group)
            continue; // a listener took it out
        ContainerModifier<Group> batch(group, reason);
        group->remove(members);
        batch.release();
        if (group->getType() == Group::kVersionsGroup && group->getConstituents().empty())
            dropLater(group, reason);
    }
}
