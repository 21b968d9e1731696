// What a change of the manager's list needs, in its order: the change lock, then the list as its
// writer. For the manager's own sources.
#pragma once

#include "bins/ChangeLock.h"
#include "filters/ProjectFilterManager.h"

class CUTROOM_SCOPED_CAPABILITY ProjectFilterManager::Writer {
public:
    explicit Writer(const ProjectFilterManager& manager)
        CUTROOM_ACQUIRE(manager.listLock_) CUTROOM_NO_THREAD_SAFETY : list_(manager.listLock_) {}
    ~Writer() CUTROOM_RELEASE() CUTROOM_NO_THREAD_SAFETY {}
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

private:
    const cutroom::ChangeLock change_;
    const SharedLock::Write list_;
};
