// `AssetAssociationGroupManager`: the single owner of the project's asset groups. Their files are
// "associations/<cookie>.AssetGroup".
#pragma once

#include "bins/AssetAssociationGroup.h"
#include "bins/DescribedContainerManager.h"

#include <vector>

namespace cutroom {
template <class T> class ProcessSingleton;
}

// Any thread, with the restrictions of DescribedContainerManager.h. Listeners of changeMsgType()
// are given a `ContainerNotice`, on the thread that made the change, for a change of a group under
// its lock as a writer.
class CUTROOM_API AssetAssociationGroupManager final : public cutroom::DescribedContainerManager {
public:
    static AssetAssociationGroupManager& instance();

    // Makes and registers a group, and records its creation (bit 2) as a change of it. An invalid
    // `id` takes a fresh cookie; empty when `id` is taken or not of kind 'G'.
    Kv::Ptr<AssetAssociationGroup>
    createGroup(const LightweightString<wchar_t>& name, const std::vector<Cookie>& constituents,
                AssetAssociationGroup::eType type = AssetAssociationGroup::kUserGroup,
                const Cookie& id = {});
    // Registers a group with its cookie, also one that was removed, to be saved with the next
    // flush; false, and nothing happens, when one with that cookie is known already or the cookie
    // is not of kind 'G'. Tells nothing.
    bool addGroup(const Kv::Ptr<AssetAssociationGroup>& group);

    // Empty when unknown.
    Kv::Ptr<AssetAssociationGroup> getGroup(const Cookie& id) const;
    // In the order of their cookies.
    std::vector<Kv::Ptr<AssetAssociationGroup>> getGroups() const;
    bool isManaged(const Cookie& id) const;
    // Takes the group out, removes its file (which stays as ".bak"), and tells. `notFound` when it
    // is not managed; on failure it stays. Not to be called under a container's lock.
    cutroom::Status removeGroup(const Kv::Ptr<AssetAssociationGroup>& group,
                                const LightweightString<char>& reason);

    // The groups that hold the asset, in the order of their cookies: those of every type, or
    // without `userGroups` those of versions only. Logarithmic in the number of members.
    std::vector<Kv::Ptr<AssetAssociationGroup>> findGroupsContainingAsset(const Cookie& asset,
                                                                          bool userGroups) const;
    // Those of one type only.
    std::vector<Kv::Ptr<AssetAssociationGroup>>
    findGroupsContainingAsset(const Cookie& asset, AssetAssociationGroup::eType type) const;

    // Saves the groups that changed: all or nothing. On failure all stay dirty; what changes
    // meanwhile stays dirty. Then tells one notice (`saved`) if anything was written. Not to be
    // called under a container's lock.
    cutroom::Status flushChanges();

    // --- what it is told -----------------------------------------------------------------------
    // By each of its groups, under that one's lock: passes the change on.
    void handleGroupModification(const Cookie& id, const ContainerBase::Modifications& changes,
                                 LightweightString<char> reason);
    // Takes deleted assets out of the groups. A group of versions that is left empty goes (its file
    // with the next flush): without its versions nothing leads to it. A user group stays, since its
    // name is the user's work.
    void handleLogsDeletion(const CookieVec& logs, const LightweightString<char>& reason) override;
    // A message of the document manager: destroyed documents leave the groups in the same way.
    void handleDocumentModifications(const NotifyMsg& message);

private:
    AssetAssociationGroupManager();
    ~AssetAssociationGroupManager() override;
    friend class cutroom::ProcessSingleton<AssetAssociationGroupManager>;
    friend class AssetAssociationGroup;

    ContainerPtr makeEmpty() const override;
    bool takes(const Cookie& id) const override;
    void removeAssets(const CookieVec& assets, const LightweightString<char>& reason);

    Kv::Ptr<Guard> documents_;
};
