// `Notifier`: an object that tells `NotifyMsg` messages by type.
#pragma once

#include "platform/messaging/NotifierBase.h"
#include "platform/messaging/NotifyMsg.h"

// The rules of telling, threads and locks are those of NotifierBase.h.
class CUTROOM_API Notifier : public NotifierBase {
public:
    ~Notifier() override;

    // Tells the message to every listener of `msgType`, stamped with that type.
    virtual void issueNotification(const NotifyMsg& message, int msgType);

    // Registers for one message type (an interned name, or a number that the notifier defines). The
    // registration lasts as long as the guard; empty for a null callback or a negative type.
    Kv::Ptr<Guard> registerNotification(CallbackPtr<NotifyMsg> callback, int msgType) const;
    // The same as `registerNotification`.
    Kv::Ptr<Guard> addListener(CallbackPtr<NotifyMsg> callback, int msgType) const;

    // Tells as the base `issueNotification` does, whatever an heir made of that.
    void call(const NotifyMsg& message, int msgType) const;
};
