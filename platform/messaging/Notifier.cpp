#include "platform/messaging/Notifier.h"

#include <utility>

Notifier::~Notifier() = default;

void Notifier::issueNotification(const NotifyMsg& message, int msgType) { call(message, msgType); }

Kv::Ptr<Guard> Notifier::registerNotification(CallbackPtr<NotifyMsg> callback, int msgType) const {
    return addCallback(std::move(callback), msgType);
}

Kv::Ptr<Guard> Notifier::addListener(CallbackPtr<NotifyMsg> callback, int msgType) const {
    return addCallback(std::move(callback), msgType);
}

void Notifier::call(const NotifyMsg& message, int msgType) const {
    if (!hasListeners())
        return;
    if (message.getType() == msgType) {
        tellAll(message, msgType);
        return;
    }
    NotifyMsg stamped(message);
    stamped.setType(msgType);
    tellAll(stamped, msgType);
}
