// `ContainerManagerBase`: base of the managers that own containers of one kind and tell of changes
// in any of them.
#pragma once

#include "platform/base/Locks.h"
#include "platform/base/Ptr.h"
#include "platform/host/ProcessLife.h"
#include "platform/messaging/Notifier.h"
#include "platform/store/ProjectListener.h"

// Lives on the user-interface thread as a `ProjectListener`; heirs say what other threads may do.
class CUTROOM_API ContainerManagerBase : public Notifier, public ProjectListener {
public:
    ~ContainerManagerBase() override;

    // The message type under which changes are told: "ContainerManagerBaseChange".
    int changeMsgType() const noexcept { return changeMsgType_; }
    using Notifier::issueNotification;

protected:
    ContainerManagerBase();

    // The one `Manager` of a life, for the heirs' `instance()`. Made while a project is open it
    // reads that project's files, under the lock of making; a program with threads of its own makes
    // it before.
    template <class Manager> static Manager& single() {
        return cutroom::ProcessSingleton<Manager>::get();
    }

    // Tells every listener of the change type, on this thread, under the change lock; `payload` is
    // the message's object. Dropped while this thread is telling the same manager's listeners
    // already. A container that changes calls it under its own lock. What a listener may do stands
    // in bins/ContainerBase.h. Not to be called under the maps' lock.
    void issueNotification(Kv::Ptr<iObject> payload) const;

    // Guards the heirs' maps. A leaf towards containers: none of their locks is taken under it.
    mutable CriticalSection mapsLock_{LockRank::managerMaps};

private:
    const int changeMsgType_;
};
