// Saving several edits as one group, and taking back those that could not be saved.
#include "platform/project/CurrentProject.h"
#include "platform/store/EditManagerImpl.h"

using cutroom::Status;

Status EditManager::save(const std::vector<EditPtr>& edits,
                         const std::function<void(double)>& progress) {
    std::vector<Kv::Ptr<Edit>> due;
    due.reserve(edits.size());
    for (const EditPtr& edit : edits)
        if (edit)
            due.emplace_back(edit.get());
    if (Status discarded = discardRest(); !discarded)
        return discarded;
    return impl_->saveAll(due, progress);
}

Status EditManager::discard(const CookieVec& edits) {
    std::vector<Kv::Ptr<Edit>> gone; // die outside the lock
    {
        const CriticalSection::Lock held(impl_->lock);
        for (const Cookie& cookie : edits) {
            const auto entry = impl_->table.find(cookie);
            if (entry == impl_->table.end())
                continue;
            gone.push_back(std::move(entry->second));
            impl_->table.erase(entry);
        }
    }
    for (const Kv::Ptr<Edit>& edit : gone) {
        const Edit::Lock lock(*edit);
        edit->impl_->takePending();
    }
    if (!CurrentProject::isOpen() || CurrentProject::isReadOnly())
        return {};
    const Status removed = removeFiles(edits);
    if (!removed) {
        const CriticalSection::Lock whole(impl_->saving);
        impl_->undiscarded.insert(impl_->undiscarded.end(), edits.begin(), edits.end());
    }
    return removed;
}

// A group of theirs that was decided would come into place with the next one.
Status EditManager::discardRest() {
    const CriticalSection::Lock whole(impl_->saving);
    if (impl_->undiscarded.empty())
        return {};
    const Status removed = removeFiles(impl_->undiscarded);
    if (removed || !CurrentProject::isOpen())
        impl_->undiscarded.clear();
    return removed;
}
