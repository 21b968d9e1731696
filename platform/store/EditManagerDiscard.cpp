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
    {
        const CriticalSection::Lock whole(impl_->saving);
        impl_->undiscarded.reserve(due.size()); // should they have to be taken back without memory
    }
    return impl_->saveAll(due, Impl::TooLarge::failsAll, progress);
}

// The edits leave the table before anything that may run out of memory.
Status EditManager::discard(const CookieVec& edits) {
    for (const Cookie& cookie : edits) {
        Kv::Ptr<Edit> gone; // dies outside the lock
        {
            const CriticalSection::Lock held(impl_->lock);
            if (const auto entry = impl_->table.find(cookie); entry != impl_->table.end()) {
                gone = std::move(entry->second);
                impl_->table.erase(entry);
            }
        }
        if (gone) {
            const Edit::Lock lock(*gone);
            gone->impl_->takePending();
        }
    }
    if (!CurrentProject::isOpen() || CurrentProject::isReadOnly())
        return {};
    {
        const CriticalSection::Lock whole(impl_->saving);
        impl_->undiscarded.insert(impl_->undiscarded.end(), edits.begin(), edits.end());
    }
    return discardRest();
}

// Must come before the next group is written: one with these edits that was decided, but is not yet
// in place, would be put in place along with it.
Status EditManager::discardRest() {
    const CriticalSection::Lock whole(impl_->saving);
    if (impl_->undiscarded.empty())
        return {};
    const Status removed = removeFiles(impl_->undiscarded);
    if (removed || !CurrentProject::isOpen())
        impl_->undiscarded.clear();
    return removed;
}
