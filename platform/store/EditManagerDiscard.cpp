// Saving several edits as one group, and taking back those that could not be saved.
#include "platform/files/Files.h"
#include "platform/files/GroupCommit.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjDb.h"
#include "platform/store/EditManagerImpl.h"

#include <algorithm>

using cutroom::Status;

Status EditManager::save(const std::vector<EditPtr>& edits) {
    std::vector<Kv::Ptr<Edit>> due;
    due.reserve(edits.size());
    for (const EditPtr& edit : edits)
        if (edit)
            due.emplace_back(edit.get());
    return impl_->saveAll(due);
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
    const bool left = cutroom::GroupCommit::pending(CurrentProject::getFolder()) ||
                      std::any_of(edits.begin(), edits.end(), [](const Cookie& cookie) {
                          return projdb::isPresent(cookie) ||
                                 cutroom::fileExists(cutroom::EditFile::path(cookie));
                      });
    return left ? removeFiles(edits) : Status();
}
