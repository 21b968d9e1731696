// `Savers`: the owners of changes that are not on the disk yet. They register here, so that an
// autosave and the close of a project reach all of them.
#pragma once

#include "platform/base/Guard.h"
#include "platform/base/Status.h"
#include "platform/messaging/Callback.h"
#include "platform/messaging/NotifyMsg.h"

#include <functional>
#include <string>

namespace cutroom {

// One owner. Both are called on the user-interface thread, without a lock.
struct Saver {
    std::string name; // for messages: "bins"
    std::function<bool()> anyDirty;
    // Writes what is dirty; what could not be written stays dirty.
    std::function<Status()> save;
};

// Static; one list in each life of the process.
class CUTROOM_API Savers {
public:
    // `saver` is asked until the guard is dropped. User-interface thread.
    [[nodiscard]] static Kv::Ptr<Guard> add(Saver saver);
    // Asks each to save, in the order of registration, also after a failure; gives the first
    // failure, its message led by the saver's name. User-interface thread.
    static Status saveAll();
    static bool anyDirty();

    // Something has become dirty. Counts; tells the listeners at the first change and at change
    // `kManyChanges` since the count was taken. Any thread, also under the locks of a container.
    static void noteChange();
    static constexpr int kManyChanges = 25;
    // The changes since the last call.
    static int takeChanges();
    static int changes();
    // `callback` is called on the user-interface thread.
    [[nodiscard]] static Kv::Ptr<Guard> addListener(const CallbackPtr<NotifyMsg>& callback);

    // Notes what a saver could not write at the project's exit, which has no outcome of its own;
    // the close of the project gives it. The first one counts.
    static void noteFailure(const Status& failure);
    static Status takeFailure();

    Savers() = delete;
};

} // namespace cutroom
