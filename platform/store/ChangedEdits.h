// `cutroom::ChangedEdits`: has the project database follow edits that changed since their last
// save, so that lists, filters and searches find them by what they are now.
#pragma once

#include "platform/base/Annotations.h"
#include "platform/base/Cookie.h"
#include "platform/base/Guard.h"
#include "platform/base/Locks.h"
#include "platform/store/Edit.h"

#include <atomic>
#include <set>

namespace cutroom {

template <class T> class ProcessSingleton;

// A new name or an undone change is entered at once, all else `kSeconds` later or when somebody
// searches, so that dragging a cut or logging a day's clips by script does not write each time. A
// save enters all of an edit. In a project that is open for reading only nothing is entered.
class CUTROOM_API ChangedEdits {
public:
    static constexpr double kSeconds = 0.2;

    // Notes what has been told of an open edit. Any thread, under no lock of the edit.
    static void note(const Edit& edit, const EditModifications& changes);
    // Enters what was noted, as one transaction: for who asks what is in the project. A failure is
    // logged, and the next save makes up for it. No listener may call this, since a manager that is
    // telling drops what it is to tell meanwhile. On the user-interface thread; on another one it
    // does nothing.
    static void enter();

private:
    friend class ProcessSingleton<ChangedEdits>;

    std::atomic<bool> armed_{false};
    Kv::Ptr<Guard> timer_; // user-interface thread
    CriticalSection lock_{LockRank::leaf};
    std::set<Cookie> waiting_ CUTROOM_GUARDED_BY(lock_);
};

} // namespace cutroom
