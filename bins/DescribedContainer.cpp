#include "bins/DescribedContainer.h"

#include "bins/DescribedContainerManager.h"
#include "bins/DescriptionReader.h"

namespace cutroom {

DescribedContainer::~DescribedContainer() = default;

bool DescribedContainer::read(const Kv::Ptr<JSON::Element>& description) {
    const Change lock(*this);
    if (!description || !take(*description, {}).ok())
        return false;
    setDirty(true);
    return true;
}

Status DescribedContainer::stage(GroupCommit& group) {
    JSON::Builder out;
    {
        const SharedLock::Read lock(lock_);
        write(out);
    }
    return manager().descriptions_.stage(group, getID(), out.text());
}

Status DescribedContainer::save() { return manager().saveOne(*this); }

void DescribedContainer::keysChanged() {
    if (membership_ == Membership::managed)
        manager().reindex(getID(), keys());
}

bool DescribedContainer::managed() const {
    const SharedLock::Read lock(lock_);
    return membership_ == Membership::managed;
}

DescribedContainer::Identity DescribedContainer::readIdentity(DescriptionReader& reader,
                                                              const IdentityKeys& keys,
                                                              std::string_view types) {
    Identity identity;
    identity.id = reader.cookie(keys.id);
    identity.name = reader.text(keys.name);
    identity.externalId = reader.text(keys.externalId);
    identity.created = reader.seconds(keys.created);
    identity.modified = reader.seconds(keys.modified);
    if (types.find(identity.id.type()) == types.npos)
        reader.fail(keys.id, "is no cookie of this kind");
    return identity;
}

Status DescribedContainer::restore(const Identity& identity, const std::string& file) {
    if (membership_ != Membership::managed)
        setID(identity.id);
    else if (identity.id != getID())
        return {StatusCode::damaged, file,
                "describes " + identity.id.asString() + " instead of " + getID().asString()};
    setStoredNames(identity.name, identity.externalId);
    setCreationTime(identity.created);
    setModificationTime(identity.modified);
    return {};
}

bool DescribedContainer::join(DescribedContainerManager& manager) {
    const Change lock(*this);
    if (membership_ == Membership::managed ||
        !manager.insert(Kv::Ptr<DescribedContainer>(this), keys()))
        return false;
    membership_ = Membership::managed;
    return true;
}

void DescribedContainer::leave(DescribedContainerManager& manager) {
    const Change lock(*this);
    manager.erase(getID());
    membership_ = Membership::left;
}

bool DescribedContainer::hasLeft() const {
    const SharedLock::Read lock(lock_);
    return membership_ == Membership::left;
}

} // namespace cutroom
