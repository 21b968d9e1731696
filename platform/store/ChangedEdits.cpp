#include "platform/store/ChangedEdits.h"

#include "platform/base/Log.h"
#include "platform/host/EventLoop.h"
#include "platform/host/Host.h"
#include "platform/host/ProcessLife.h"
#include "platform/messaging/UiThread.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjDb.h"
#include "platform/store/EditImpl.h"
#include "platform/store/EditManager.h"
#include "platform/store/EditRecord.h"

#include <optional>

namespace cutroom {

namespace {

// The record of a clean edit is that of its save. One without a record is not in the project.
bool isBehind(const Edit& edit) {
    return edit.isDirty() && CurrentProject::isOpen() && !CurrentProject::isReadOnly() &&
           projdb::isPresent(edit.getCookie());
}

void logFailure(const Status& status) {
    if (!status)
        LogBoth("%s\n", status.text().c_str());
}

// Within a batch, so that nothing is told under the lock. That is held so that no save on another
// thread enters a newer state in between.
Status put(const Edit& edit) {
    const Edit::Lock lock(edit);
    return projdb::update(recordOf(edit.getCookie(), EditAccess::impl(edit).state));
}

void putNow(const Edit& edit) {
    ProjDbModificationCoalescer together;
    const Status status = put(edit);
    logFailure(status ? together.commit() : status);
}

} // namespace

void ChangedEdits::note(const Edit& edit, const EditModifications& changes) {
    if (!isBehind(edit))
        return;
    if (changes.includes(kModName) || changes.includes(kModRestored))
        return putNow(edit);
    auto& all = ProcessSingleton<ChangedEdits>::get();
    {
        const CriticalSection::Lock lock(all.lock_);
        all.waiting_.insert(edit.getCookie());
    }
    if (!all.armed_.exchange(true))
        postToUiThread([] {
            if (auto* const armed = ProcessSingleton<ChangedEdits>::find())
                armed->timer_ = Host::loop().addTimer(kSeconds, 0, [] { enter(); });
        });
}

void ChangedEdits::enter() {
    auto* const all = ProcessSingleton<ChangedEdits>::find();
    if (!all || !isUiThread())
        return;
    all->armed_ = false;
    all->timer_.reset();
    std::set<Cookie> due;
    {
        const CriticalSection::Lock lock(all->lock_);
        due.swap(all->waiting_);
    }
    std::optional<ProjDbModificationCoalescer> together;
    for (const Cookie& cookie : due) {
        const EditPtr edit = EditManager::instance().isOpen(cookie) ? EditPtr(cookie) : EditPtr();
        if (!edit || !isBehind(*edit))
            continue;
        if (!together)
            together.emplace();
        if (const Status status = put(*edit); !status)
            return logFailure(status);
    }
    if (together)
        logFailure(together->commit());
}

} // namespace cutroom
