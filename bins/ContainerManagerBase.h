// `ContainerManagerBase`: base of the managers that own containers of one kind and tell of changes
// in any of them.
#pragma once

#include "platform/base/Locks.h"
#include "platform/base/Ptr.h"
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

    // Tells every listener of the change type, on this thread; `payload` is the message's object.
    // Dropped while this thread is telling the same manager's listeners already. Containers call it
    // under their own lock, so a listener must not wait for another thread that changes one.
    void issueNotification(Kv::Ptr<iObject> payload) const;

    // Guards the heirs' maps. A leaf towards containers: none of their locks is taken under it.
    mutable CriticalSection mapsLock_{LockRank::managerMaps};

private:
    const int changeMsgType_;
};
