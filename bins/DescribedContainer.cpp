#include "bins/DescribedContainer.h"

#include "bins/DescribedContainerManager.h"

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

void DescribedContainer::restore(const Identity& identity) {
    if (membership_ != Membership::managed)
        setID(identity.id);
    setStoredNames(identity.name, identity.externalId);
    setCreationTime(identity.created);
    setModificationTime(identity.modified);
}

Status DescribedContainer::checkIdentity(const Identity& identity, const std::string& file) const {
    if (!managed() || identity.id == getID())
        return {};
    return {StatusCode::damaged, file,
            "describes " + identity.id.asString() + " instead of " + getID().asString()};
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
