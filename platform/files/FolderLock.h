// One writing process for a folder.
#pragma once

#include "platform/base/Status.h"
#include "platform/host/FileSystem.h"

#include <string>

namespace cutroom {

// Holds the exclusive lock of a folder (a file "lock" in it) from `take` to destruction; the
// operating system ends it with the process. Movable; any thread.
class CUTROOM_API FolderLock {
public:
    // Takes the lock without waiting. `locked`, naming the process when it is known, when another
    // process, or another FolderLock of this one, has it.
    static Result<FolderLock> take(const std::string& folder);

    FolderLock(FolderLock&& other) noexcept;
    FolderLock& operator=(FolderLock&& other) noexcept;
    ~FolderLock();

private:
    FolderLock(iFileSystem& files, iFileSystem::Handle handle) noexcept
        : files_(&files), handle_(handle) {}
    void drop() noexcept;

    iFileSystem* files_;
    iFileSystem::Handle handle_;
};

} // namespace cutroom
