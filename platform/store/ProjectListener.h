// `ProjectListener`: a base of objects that follow the project's life and the changes of its logs.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Strings.h"
#include "platform/messaging/Notifier.h"
#include "platform/store/EditManager.h"

#include <vector>

// Registers with the open project and the edit manager while it lives. All calls come on the
// user-interface thread, without a lock. Every operation does nothing by default.
class CUTROOM_API ProjectListener {
public:
    ProjectListener();
    ProjectListener(const ProjectListener&) = delete;
    ProjectListener& operator=(const ProjectListener&) = delete;
    virtual ~ProjectListener();

    // A project has been opened.
    virtual void handleProjectEntry() {}
    // The project is about to close; its files can still be written.
    virtual void handleProjectExit() {}
    // Edits or logs have gone; `reason` as given to the deletion.
    virtual void handleLogsDeletion(const CookieVec& logs, const LightweightString<char>& reason);
    // Edits or logs have changed.
    virtual void handleLogsModification(const std::vector<EditManager::Modification>& changes);

private:
    std::vector<Kv::Ptr<Guard>> registrations_;
};
