#include "bins/ContainerBase.h"

#include "platform/base/IdSource.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "platform/project/Savers.h"

namespace {

constexpr unsigned kNotSaved = ContainerBase::kModUncounted | ContainerBase::kModItemsTagged;

LightweightString<char> secondsText(std::uint32_t seconds) {
    return seconds == 0 ? std::string() : cutroom::toText(static_cast<unsigned long long>(seconds));
}

} // namespace

CUTROOM_NO_THREAD_SAFETY ContainerBase::Change::Change(const ContainerBase& container)
    : lock_(container.lock_) {
    cutroom::ChangeLock::section().lock();
    lock_.lockWrite();
}

CUTROOM_NO_THREAD_SAFETY ContainerBase::Change::~Change() {
    lock_.unlockWrite();
    cutroom::ChangeLock::section().unlock();
}

ContainerBase::~ContainerBase() = default;

// --- saving --------------------------------------------------------------------------------------

bool ContainerBase::isDirty() const { return dirty_; }

// Counts before it sets the flag, so that a thread that sees the flag sees the new count.
void ContainerBase::setDirty(bool dirty) {
    if (dirty)
        ++changes_;
    dirty_ = dirty;
    if (dirty)
        cutroom::Savers::noteChange();
}

cutroom::Status ContainerBase::stage(cutroom::GroupCommit&) {
    return {cutroom::StatusCode::wrongUsage, getID().asString(), "cannot be saved with others"};
}

void ContainerBase::setSaved(std::uint64_t changeCount) {
    const Change lock(*this);
    if (changes_ != changeCount)
        return;
    setDirty(false);
    if (changes_ != changeCount) // made dirty by hand in between
        dirty_ = true;
}

// --- identity ------------------------------------------------------------------------------------

Cookie ContainerBase::getID() const {
    const SharedLock::Read lock(lock_);
    return id_;
}

void ContainerBase::setID(const Cookie& id) {
    const Change lock(*this);
    id_ = id;
}

LightweightString<wchar_t> ContainerBase::getName() const {
    const SharedLock::Read lock(lock_);
    return name_;
}

bool ContainerBase::setName(const LightweightString<wchar_t>& name) {
    const Change lock(*this);
    if (name == name_)
        return false;
    name_ = name;
    addModification(Modification(LogAttribute::name));
    return true;
}

LightweightString<wchar_t> ContainerBase::getExternalID() const {
    const SharedLock::Read lock(lock_);
    return externalId_;
}

void ContainerBase::setExternalID(const LightweightString<wchar_t>& id) {
    const Change lock(*this);
    if (id == externalId_)
        return;
    externalId_ = id;
    addModification(Modification(LogAttribute::externalID));
}

std::uint32_t ContainerBase::getCreationTime() const {
    const SharedLock::Read lock(lock_);
    return creationTime_;
}

std::uint32_t ContainerBase::getModificationTime() const {
    const SharedLock::Read lock(lock_);
    return modificationTime_;
}

void ContainerBase::setStoredNames(LightweightString<wchar_t> name,
                                   LightweightString<wchar_t> externalId) {
    const Change change(*this);
    name_ = std::move(name);
    externalId_ = std::move(externalId);
}

void ContainerBase::setCreationTime(std::uint32_t seconds) {
    const Change lock(*this);
    creationTime_ = seconds;
}

void ContainerBase::setModificationTime(std::uint32_t seconds) {
    const Change lock(*this);
    modificationTime_ = seconds;
}

LightweightString<char> ContainerBase::getAttribute(const LogAttribute& attribute) const {
    switch (attribute.getType()) {
    case LogAttribute::name:
        return cutroom::toUtf8(getName());
    case LogAttribute::cookie:
        return getID().valid() ? getID().asString() : std::string();
    case LogAttribute::modified:
        return secondsText(getModificationTime());
    case LogAttribute::created:
        return secondsText(getCreationTime());
    case LogAttribute::externalID:
        return cutroom::toUtf8(getExternalID());
    default:
        return {};
    }
}

void ContainerBase::setAttribute(const LogAttribute& attribute,
                                 const LightweightString<wchar_t>& value) {
    if (attribute.getType() == LogAttribute::name)
        setName(value);
    else if (attribute.getType() == LogAttribute::externalID)
        setExternalID(value);
}

void ContainerBase::setAttribute(const LogAttribute& attribute,
                                 const LightweightString<char>& value) {
    setAttribute(attribute, cutroom::toWide(value));
}

// --- changes -------------------------------------------------------------------------------------

void ContainerBase::beginModifications() { openBatches_.fetch_add(1); }

void ContainerBase::endModifications(LightweightString<char> reason) {
    if (openBatches_.fetch_sub(1) != 1)
        return;
    const Change lock(*this);
    if (!pending_.empty())
        issuePending(std::move(reason));
}

void ContainerBase::addModification(const Modification& change) {
    if (!change.valid())
        return;
    const Change lock(*this);
    if (pending_.add(change))
        stampTimes(change);
    if ((change.getType() & ~kNotSaved) != 0)
        setDirty(true);
    if (openBatches_.load() == 0)
        issuePending({});
}

void ContainerBase::clearModifications() {
    const Change lock(*this);
    pending_.clear();
}

void ContainerBase::tellModification(const Modification& change, LightweightString<char> reason) {
    const Change lock(*this);
    Modifications told;
    if (told.add(change))
        issueModificationNotification(told, std::move(reason));
}

void ContainerBase::stampTimes(const Modification& change) {
    const std::uint32_t now = cutroom::idSource().secondsNow();
    if (change.includes(kModCreated) && creationTime_ == 0)
        creationTime_ = now;
    if (change.includes(kModUncounted))
        return;
    if (change.includes(LogAttribute::modified) || change.includes(LogAttribute::externalID))
        return;
    modificationTime_ = now;
}

// The records are taken out first: what a listener does must not tell them again.
void ContainerBase::issuePending(LightweightString<char> reason) {
    const Modifications ready(pending_);
    pending_.clear();
    issueModificationNotification(ready, std::move(reason));
}

void ContainerBase::issueModificationNotification(const Modifications& changes,
                                                  LightweightString<char> reason) {
    if (!hasListeners())
        return;
    auto payload = Kv::makePtr<Modifications>(changes);
    payload->setReason(std::move(reason));
    issueNotification(NotifyMsg(std::move(payload)), NotifyMsgTypeDictionary::kGeneralChange);
}
