// Reading, saving and removing.
#include "bins/DescribedContainerManager.h"
#include "platform/base/Log.h"
#include "platform/files/GroupCommit.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/Savers.h"

namespace cutroom {

namespace {

Status checkWritable() {
    if (!CurrentProject::isReadOnly())
        return {};
    return {StatusCode::failed, CurrentProject::getFolder(),
            "the project is open for reading only"};
}

} // namespace

// --- reading -------------------------------------------------------------------------------------

// Other listeners of a project's entry may be told before this manager, and ask for containers.
void DescribedContainerManager::catchUp() const {
    const Cookie open = CurrentProject::getCookie();
    const auto done = [&] {
        const CriticalSection::Lock lock(mapsLock_);
        return !open.valid() || project_ == open;
    };
    if (done())
        return;
    const ChangeLock oneAtATime;
    if (!done())
        const_cast<DescribedContainerManager*>(this)->setUp(); // as if it had been told
}

void DescribedContainerManager::setUp() {
    letGo();
    if (const auto read = readUnknown(); !read)
        LogBoth("%s\n", read.status().text().c_str());
    const CriticalSection::Lock lock(mapsLock_);
    project_ = CurrentProject::getCookie();
}

void DescribedContainerManager::handleProjectEntry() {
    catchUp();
    issueNotification(Kv::makePtr<ContainerNotice>(ContainerNotice::What::reset, CookieVec()));
}

DescribedContainerManager::ContainerPtr DescribedContainerManager::readOne(const Cookie& id) {
    const ContainerPtr container = makeEmpty();
    const Status read = descriptions_.read(
        id, [&](const JSON::Element& description, const std::string& file) -> Status {
            if (Status taken = container->take(description, file); !taken)
                return taken;
            if (container->getID() != id)
                return {StatusCode::damaged, file,
                        "describes " + container->getID().asString() + ", another cookie"};
            return {};
        });
    if (!read)
        return nullptr;
    afterReading(*container);
    return container->join(*this) ? container : nullptr;
}

Result<std::vector<DescribedContainerManager::ContainerPtr>>
DescribedContainerManager::readFiles() {
    catchUp();
    const CriticalSection::Lock whole(filesLock_);
    return readUnknown();
}

Result<std::vector<DescribedContainerManager::ContainerPtr>>
DescribedContainerManager::readUnknown() {
    const auto ids = descriptions_.list([this](const Cookie& id) { return takes(id); });
    if (!ids)
        return ids.status();
    std::vector<ContainerPtr> added;
    for (const Cookie& id : *ids) {
        {
            const CriticalSection::Lock lock(mapsLock_);
            if (entries_.count(id) != 0 || removals_.count(id) != 0)
                continue;
        }
        if (ContainerPtr container = readOne(id))
            added.push_back(std::move(container));
    }
    return added;
}

// --- saving --------------------------------------------------------------------------------------

void DescribedContainerManager::handleProjectExit() {
    Status saved = saveDirty();
    if (saved)
        return;
    LogBoth("%s: %s\n", name_.c_str(), saved.text().c_str());
    Savers::noteFailure(saved);
}

std::vector<DescribedContainerManager::ContainerPtr> DescribedContainerManager::dirtyOnes() const {
    std::vector<ContainerPtr> dirty = held();
    std::erase_if(dirty, [](const ContainerPtr& container) { return !container->isDirty(); });
    return dirty;
}

Status DescribedContainerManager::saveDirty() {
    if (anyDirty())
        catchUp(); // containers made without a project do not belong to this one
    // Made before anything is written, so that nothing runs out of memory afterwards.
    const auto notice = Kv::makePtr<ContainerNotice>(ContainerNotice::What::saved, CookieVec());
    {
        const CriticalSection::Lock whole(filesLock_);
        const std::vector<ContainerPtr> dirty = dirtyOnes();
        CookieVec removals;
        {
            const CriticalSection::Lock lock(mapsLock_);
            removals.assign(removals_.begin(), removals_.end());
        }
        if ((dirty.empty() && removals.empty()) || !CurrentProject::isOpen())
            return {};
        if (Status written = writeAll(dirty, removals); !written)
            return written;
    }
    issueNotification(notice);
    return {};
}

Status DescribedContainerManager::saveOne(DescribedContainer& container) {
    catchUp(); // to know which files are damaged
    const CriticalSection::Lock whole(filesLock_);
    if (container.hasLeft())
        return {StatusCode::wrongUsage, container.getID().asString(),
                "is no longer in the project"};
    if (!takes(container.getID()))
        return {StatusCode::wrongUsage, container.getID().asString(), "has no cookie of its kind"};
    if (const ContainerPtr known = find(container.getID()); known && known.get() != &container)
        return {StatusCode::wrongUsage, container.getID().asString(), "is another one's cookie"};
    if (!CurrentProject::isOpen())
        return {};
    return writeAll({ContainerPtr(&container)}, {});
}

// The counts are taken before the texts, so that what changes between the two is saved again.
Status DescribedContainerManager::writeAll(const std::vector<ContainerPtr>& containers,
                                           const CookieVec& removals) {
    if (Status writable = checkWritable(); !writable)
        return writable;
    GroupCommit group(CurrentProject::getFolder());
    std::vector<std::uint64_t> counts;
    std::set<Cookie> written;
    for (const Cookie& id : removals)
        if (Status removed = group.remove(descriptions_.name(id)); !removed)
            return removed;
    for (const ContainerPtr& container : containers) {
        counts.push_back(container->changeCount());
        written.insert(container->getID());
        if (Status staged = container->stage(group); !staged)
            return staged;
    }
    if (Status committed = group.commit(); !committed)
        return committed;
    for (std::size_t i = 0; i < containers.size(); ++i)
        containers[i]->setSaved(counts[i]);
    settleRemovals(removals, written);
    return {};
}

// A removal is settled unless the container's file was written again. When it was, and the
// container is still there, the removal is dropped; when the container has gone meanwhile, it stays
// due.
void DescribedContainerManager::settleRemovals(const CookieVec& removed,
                                               const std::set<Cookie>& written) {
    const CriticalSection::Lock lock(mapsLock_);
    for (const Cookie& id : removed)
        if (written.count(id) == 0)
            removals_.erase(id);
    for (const Cookie& id : written)
        if (entries_.count(id) != 0)
            removals_.erase(id);
}

// --- removing ------------------------------------------------------------------------------------

Status DescribedContainerManager::removeFiles(const std::vector<ContainerPtr>& containers) {
    if (!CurrentProject::isOpen())
        return {};
    if (Status writable = checkWritable(); !writable)
        return writable;
    GroupCommit group(CurrentProject::getFolder());
    for (const ContainerPtr& container : containers) {
        const Cookie id = container->getID();
        Result<std::vector<std::string>> files = filesOf(id);
        if (!files)
            return files.status();
        files->push_back(descriptions_.name(id));
        for (const std::string& file : *files)
            if (Status removed = group.remove(file); !removed)
                return removed;
    }
    Status committed = group.commit();
    if (!committed) // should it be decided nevertheless, the next save writes them again
        for (const ContainerPtr& container : containers)
            container->setDirty(true);
    return committed;
}

Status DescribedContainerManager::destroyAll(const CookieVec& ids,
                                             const LightweightString<char>& reason) {
    CookieVec gone;
    {
        const CriticalSection::Lock whole(filesLock_);
        std::vector<ContainerPtr> containers;
        std::set<Cookie> seen;
        for (const Cookie& id : ids)
            if (const ContainerPtr container = find(id); container && seen.insert(id).second) {
                containers.push_back(container);
                gone.push_back(id);
            }
        if (gone.empty())
            return {StatusCode::notFound, ids.empty() ? name_ : ids.front().asString(),
                    "is not in the project"};
        if (Status removed = removeFiles(containers); !removed) {
            if (!GroupCommit::pending(CurrentProject::getFolder()))
                return removed;
            // Decided, and completed by the next save or opening: nothing takes it back.
            LogBoth("%s\n", removed.text().c_str());
            const CriticalSection::Lock lock(mapsLock_);
            removals_.insert(gone.begin(), gone.end());
        }
        for (const ContainerPtr& container : containers)
            container->leave(*this);
        if (CurrentProject::isOpen())
            for (const Cookie& id : gone)
                afterDestruction(id);
    }
    issueNotification(
        Kv::makePtr<ContainerNotice>(ContainerNotice::What::destroyed, std::move(gone), reason));
    return {};
}

void DescribedContainerManager::dropLater(const ContainerPtr& container,
                                          const LightweightString<char>& reason) {
    const ChangeLock change;
    const Cookie id = container->getID();
    if (find(id) != container)
        return;
    container->leave(*this);
    {
        const CriticalSection::Lock lock(mapsLock_);
        removals_.insert(id);
    }
    Savers::noteChange();
    issueNotification(
        Kv::makePtr<ContainerNotice>(ContainerNotice::What::destroyed, CookieVec{id}, reason));
}

} // namespace cutroom
