// The table and the index.
#include "bins/DescribedContainerManager.h"

#include "platform/project/CurrentProject.h"
#include "platform/project/Savers.h"

#include <algorithm>

namespace cutroom {

DescribedContainerManager::DescribedContainerManager(const char* name, const char* folder,
                                                     const char* extension)
    : name_(name), descriptions_(folder, extension),
      exited_(CurrentProject::addListener(
          makeCallback<NotifyMsg>([this](const NotifyMsg&) { letGo(); }),
          CurrentProject::exitedMsgType())),
      saver_(Savers::add({name, [this] { return anyDirty(); }, [this] { return saveDirty(); }})) {}

DescribedContainerManager::~DescribedContainerManager() = default;

void DescribedContainerManager::afterReading(DescribedContainer&) const {}

Result<std::vector<std::string>> DescribedContainerManager::filesOf(const Cookie&) const {
    return std::vector<std::string>();
}

void DescribedContainerManager::afterDestruction(const Cookie&) const {}

bool DescribedContainerManager::anyDirty() const {
    const CriticalSection::Lock lock(mapsLock_);
    return !removals_.empty() ||
           std::any_of(entries_.begin(), entries_.end(),
                       [](const auto& entry) { return entry.second.container->isDirty(); });
}

std::vector<Status> DescribedContainerManager::getDamaged() const {
    catchUp();
    return descriptions_.damaged();
}

bool DescribedContainerManager::enter(const ContainerPtr& container) {
    catchUp();
    return takes(container->getID()) && container->join(*this);
}

DescribedContainerManager::ContainerPtr DescribedContainerManager::find(const Cookie& id) const {
    catchUp();
    const CriticalSection::Lock lock(mapsLock_);
    const auto entry = entries_.find(id);
    return entry == entries_.end() ? nullptr : entry->second.container;
}

std::vector<DescribedContainerManager::ContainerPtr> DescribedContainerManager::all() const {
    catchUp();
    return held();
}

std::vector<DescribedContainerManager::ContainerPtr> DescribedContainerManager::held() const {
    const CriticalSection::Lock lock(mapsLock_);
    std::vector<ContainerPtr> containers;
    containers.reserve(entries_.size());
    for (const auto& [id, entry] : entries_)
        containers.push_back(entry.container);
    return containers;
}

std::size_t DescribedContainerManager::countOf(CookieType type) const {
    catchUp();
    const CriticalSection::Lock lock(mapsLock_);
    return static_cast<std::size_t>(
        std::count_if(entries_.begin(), entries_.end(),
                      [=](const auto& entry) { return entry.first.type() == type; }));
}

std::vector<DescribedContainerManager::ContainerPtr>
DescribedContainerManager::findByKey(const std::string& key) const {
    catchUp();
    const CriticalSection::Lock lock(mapsLock_);
    std::vector<ContainerPtr> containers;
    for (auto at = keys_.lower_bound({key, Cookie('A', 0, 0)}); at != keys_.end(); ++at) {
        if (at->first != key)
            break;
        containers.push_back(entries_.at(at->second).container);
    }
    return containers;
}

void DescribedContainerManager::letGo() noexcept {
    for (const ContainerPtr& container : held())
        container->leave(*this);
    descriptions_.reset();
    const CriticalSection::Lock lock(mapsLock_);
    removals_.clear();
    project_ = {};
}

// --- called by containers ------------------------------------------------------------------------

bool DescribedContainerManager::insert(ContainerPtr container, std::vector<std::string> keys) {
    const Cookie id = container->getID();
    const CriticalSection::Lock lock(mapsLock_);
    const auto [at, added] = entries_.try_emplace(id, Entry{std::move(container), std::move(keys)});
    if (added)
        addKeys(id, at->second);
    return added;
}

void DescribedContainerManager::reindex(const Cookie& id, std::vector<std::string> keys) {
    const CriticalSection::Lock lock(mapsLock_);
    const auto entry = entries_.find(id);
    if (entry == entries_.end())
        return;
    removeKeys(id, entry->second);
    entry->second.keys = std::move(keys);
    addKeys(id, entry->second);
}

// The container itself may die of it, outside the lock.
void DescribedContainerManager::erase(const Cookie& id) {
    ContainerPtr gone;
    const CriticalSection::Lock lock(mapsLock_);
    const auto entry = entries_.find(id);
    if (entry == entries_.end())
        return;
    removeKeys(id, entry->second);
    gone.swap(entry->second.container);
    entries_.erase(entry);
}

void DescribedContainerManager::removeKeys(const Cookie& id, const Entry& entry) {
    for (const std::string& key : entry.keys)
        keys_.erase({key, id});
}

void DescribedContainerManager::addKeys(const Cookie& id, const Entry& entry) {
    for (const std::string& key : entry.keys)
        keys_.emplace(key, id);
}

} // namespace cutroom
