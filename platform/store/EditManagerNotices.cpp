// What the edit manager tells, and the life of a project.
#include "platform/base/Log.h"
#include "platform/host/ProcessLife.h"
#include "platform/messaging/UIThreadCallback.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectDatabase.h"
#include "platform/store/ChangedEdits.h"
#include "platform/store/EditManagerImpl.h"
#include "platform/store/ProjectListener.h"

#include <algorithm>

EditDeletionNotice::~EditDeletionNotice() = default;

void EditManager::Impl::tell(int notice, const Kv::Ptr<iObject>& object,
                             const std::string& text) const {
    notifier.call(NotifyMsg(object, text), notice);
}

void EditManager::tellModifications(const Edit& edit, const NotifyMsg& message) {
    EditManager* const manager = cutroom::ProcessSingleton<EditManager>::find();
    if (!manager)
        return;
    const auto* notice = message.getObjectAs<EditModificationNotice>();
    if (manager->isOpen(edit.getCookie()))
        cutroom::ChangedEdits::note(edit, notice->modifications());
    manager->impl_->notifier.call(message, kNoticeModifications);
}

Kv::Ptr<Guard>
EditManager::registerNotification(const Kv::Ptr<iCallbackBase<int, NotifyMsg>>& callback,
                                  int notice) {
    return registerNotification(callback, notice, {});
}

Kv::Ptr<Guard>
EditManager::registerNotification(const Kv::Ptr<iCallbackBase<int, NotifyMsg>>& callback,
                                  int notice, std::function<bool(const NotifyMsg&)> filter) {
    if (!callback)
        return {};
    const auto onUiThread = Kv::makePtr<UIThreadCallback<NotifyMsg>>(callback);
    onUiThread->setDeliveryCondition(std::move(filter));
    return impl_->notifier.registerNotification(onUiThread, notice);
}

// First the viewed edits are told (notice 16), then the project's listeners, the latest first. Then
// what they changed is saved, and last the edits are dropped.
cutroom::Status EditManager::handleProjectExit() {
    impl_->tell(kNoticeProjectExit, {}, CurrentProject::getCookie().asString());
    impl_->tellListenersOfExit();
    const cutroom::Status status = flushChanges(false);
    if (!status)
        cutroom::ProjectDatabase::instance().leaveInterrupted();
    const CriticalSection::Lock whole(impl_->saving);
    impl_->undiscarded.clear();                     // what is left of them belongs to this project
    std::unordered_map<Cookie, Kv::Ptr<Edit>> gone; // die outside the lock
    const CriticalSection::Lock held(impl_->lock);
    gone.swap(impl_->table);
    ++impl_->removals;
    impl_->clipboard = Cookie();
    return status;
}

void EditManager::Impl::tellListenersOfExit() {
    std::vector<ProjectListener*> left;
    {
        const CriticalSection::Lock held(lock);
        left = listeners;
    }
    for (auto listener = left.rbegin(); listener != left.rend(); ++listener) {
        {
            const CriticalSection::Lock held(lock);
            if (std::find(listeners.begin(), listeners.end(), *listener) == listeners.end())
                continue; // it was removed meanwhile
        }
        (*listener)->handleProjectExit();
    }
}

// --- project listeners --------------------------------------------------------------------------

ProjectListener::ProjectListener() {
    EditManager& manager = EditManager::instance();
    {
        const CriticalSection::Lock held(manager.impl_->lock);
        manager.impl_->listeners.push_back(this);
    }
    registrations_.push_back(CurrentProject::addListener(
        makeCallback<NotifyMsg>([this](const NotifyMsg&) { handleProjectEntry(); }),
        CurrentProject::enteredMsgType()));
    registrations_.push_back(manager.registerNotification(
        makeCallback<NotifyMsg>([this](const NotifyMsg& message) {
            if (const auto* notice = message.getObjectAs<EditDeletionNotice>())
                handleLogsDeletion(notice->edits(), notice->reason());
        }),
        kNoticeDeletion));
    registrations_.push_back(manager.registerNotification(
        makeCallback<NotifyMsg>([this](const NotifyMsg& message) {
            if (const auto* notice = message.getObjectAs<EditModificationNotice>())
                handleLogsModification({{notice->edit(), notice->modifications()}});
        }),
        kNoticeModifications));
}

ProjectListener::~ProjectListener() {
    registrations_.clear();
    if (EditManager* const manager = cutroom::ProcessSingleton<EditManager>::find()) {
        const CriticalSection::Lock held(manager->impl_->lock);
        auto& listeners = manager->impl_->listeners;
        listeners.erase(std::remove(listeners.begin(), listeners.end(), this), listeners.end());
    }
}

void ProjectListener::handleLogsDeletion(const CookieVec&, const LightweightString<char>&) {}

void ProjectListener::handleLogsModification(const std::vector<EditManager::Modification>&) {}
