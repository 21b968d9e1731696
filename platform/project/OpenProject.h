// `cutroom::OpenProject`: the state behind `CurrentProject`.
#pragma once

#include "platform/base/Locks.h"
#include "platform/files/FolderLock.h"
#include "platform/host/ProcessLife.h"
#include "platform/messaging/Notifier.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectFile.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace cutroom {

// Opened and closed on the user-interface thread; asked on any. The lock is a leaf and guards what
// queries copy.
class OpenProject {
public:
    static OpenProject& instance();

    Status open(const std::string& folder, CurrentProject::Access access,
                CurrentProject::IfMissing ifMissing);
    Status close();

    bool isOpen() const noexcept { return open_.load(std::memory_order_acquire); }
    bool isReadOnly() const noexcept { return readOnly_.load(std::memory_order_acquire); }
    bool isExiting() const noexcept { return exiting_.load(std::memory_order_acquire); }
    ProjectFile file() const;
    Cookie cookie() const;
    std::vector<LogAttribute> customAttributes() const;
    std::string folder() const;
    std::vector<Status> warnings() const;

    // Writes the changed project.json, and counts it when that is done.
    Status replaceFile(ProjectFile changed);
    Status rebuildDatabase();

    Notifier& notifier() noexcept { return notifier_; }
    // User-interface thread only.
    using Rebuilder = std::shared_ptr<const std::function<Status()>>;
    Rebuilder& rebuilder() noexcept { return rebuild_; }

private:
    friend class ProcessSingleton<OpenProject>;
    OpenProject() = default;
    ~OpenProject();

    Status checkFolder(const std::string& folder, CurrentProject::IfMissing ifMissing) const;
    Status prepareForWriting(const std::string& folder);
    Status loadFile(const std::string& folder);
    Status replaceDamagedFile(const std::string& folder, const Status& damage);
    Status openParts(const std::string& folder);
    Status openDatabase(const std::string& folder);
    Status loadPermissions(const std::string& folder);
    void publish(const std::string& folder);
    void warn(const Status& status);
    void forget() noexcept;
    void tell(int msgType, const Cookie& project);

    mutable CriticalSection lock_{LockRank::leaf};
    ProjectFile file_ CUTROOM_GUARDED_BY(lock_);
    std::string folder_ CUTROOM_GUARDED_BY(lock_);
    std::vector<Status> warnings_ CUTROOM_GUARDED_BY(lock_);
    std::optional<FolderLock> folderLock_; // user-interface thread only
    Rebuilder rebuild_;                    // user-interface thread only
    bool filesRecovered_ = false; // files have come into place whose records may be missing
    std::atomic<bool> open_{false};
    std::atomic<bool> readOnly_{false};
    std::atomic<bool> exiting_{false};
    Notifier notifier_;
};

} // namespace cutroom
