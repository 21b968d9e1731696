// `PermissionsManager`: who may change which asset of the open project.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Export.h"
#include "platform/base/Locks.h"
#include "platform/base/Status.h"
#include "platform/files/JsonElement.h"
#include "platform/host/ProcessLife.h"

#include <map>
#include <optional>
#include <string>

// Two kinds of mark: an asset can be locked for one user, so that it is read-only for all others,
// and it can be write-protected for everyone. Marks are kept in the project's permissions.json, so
// they hold for whoever opens the project next. A change is written before it counts. Any thread;
// the lock is a leaf, held while the file is written.
class CUTROOM_API PermissionsManager {
public:
    static PermissionsManager& instance();

    // The name marks are made for and compared with: what was set, else the login name.
    std::string getCurrentUser() const;
    void setCurrentUser(const std::string& user);

    // True when another user holds it, when it is write-protected, or when the project is open for
    // reading only. False for the invalid cookie and without a project, which have no marks.
    bool isReadOnly(const Cookie& cookie) const;
    bool canWrite(const Cookie& cookie) const { return !isReadOnly(cookie); }

    // The user who holds the asset; empty when nobody does.
    std::string getLockHolder(const Cookie& cookie) const;
    bool isProtected(const Cookie& cookie) const;

    // Locks the asset for the current user; fails when another holds it.
    cutroom::Status lock(const Cookie& cookie);
    // Makes the current user the holder, whoever held it before. A write protection stays.
    cutroom::Status takeOver(const Cookie& cookie);
    // Ends the lock; fails when another user holds it.
    cutroom::Status unlock(const Cookie& cookie);
    cutroom::Status setProtected(const Cookie& cookie, bool on);
    // Drops all marks of a deleted asset.
    cutroom::Status forget(const Cookie& cookie);

    // Called by the open project: reads the marks from its folder, and drops them. After a failure
    // there are no marks.
    cutroom::Status load(const std::string& projectFolder, bool readOnly);
    void unload();

private:
    friend class cutroom::ProcessSingleton<PermissionsManager>;
    struct Mark {
        std::string holder;
        bool isProtected = false;
        friend bool operator==(const Mark&, const Mark&) = default;
    };
    PermissionsManager() = default;
    Mark markOf(const Cookie& cookie) const CUTROOM_REQUIRES(lock_);
    cutroom::Status change(const Cookie& cookie, const Mark& mark) CUTROOM_REQUIRES(lock_);
    cutroom::Status save(const std::map<Cookie, Mark>& marks) const CUTROOM_REQUIRES(lock_);
    std::string currentUserLocked() const CUTROOM_REQUIRES(lock_);

    mutable CriticalSection lock_{LockRank::leaf};
    std::map<Cookie, Mark> marks_ CUTROOM_GUARDED_BY(lock_);
    Kv::Ptr<JSON::Element> former_ CUTROOM_GUARDED_BY(lock_); // the file as read
    std::string folder_ CUTROOM_GUARDED_BY(lock_);            // empty: no project
    std::string user_ CUTROOM_GUARDED_BY(lock_);              // empty: the login name
    bool readOnly_ CUTROOM_GUARDED_BY(lock_) = false;
};
