// `GenericNotifier<Event>` and `NotifierEx<T>`: notifiers of typed events.
//
// The rules of telling, threads and locks are those of platform/messaging/NotifierBase.h.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/messaging/NotifierBase.h"
#include "platform/messaging/NotifierEvent.h"

#include <utility>

// Tells events of one class by message type. `Event` is copied, and has `setMsgType(int)`.
template <class Event> class CUTROOM_API GenericNotifier : public NotifierBase {
public:
    // Registers for one message type for as long as the guard is kept. Empty for a null callback or
    // a negative type.
    Kv::Ptr<Guard> registerNotification(CallbackPtr<Event> callback, int msgType) const {
        return addCallback(std::move(callback), msgType);
    }
    // The same as `registerNotification`.
    Kv::Ptr<Guard> addListener(CallbackPtr<Event> callback, int msgType) const {
        return addCallback(std::move(callback), msgType);
    }

    // Tells a copy of the event, stamped with `msgType`, to every listener of that type, in the
    // order of registration. Nothing is copied when nobody listens.
    void call(const Event& event, int msgType) const {
        if (!hasListeners())
            return;
        Event stamped(event);
        stamped.setMsgType(msgType);
        tellAll(stamped, msgType);
    }
    // The same as `call`.
    void issueNotification(const Event& event, int msgType) const { call(event, msgType); }
};

// The same for the events of a published value, with a telling that heirs may change.
template <class T> class CUTROOM_API NotifierEx : public GenericNotifier<NotifierEvent<T>> {
public:
    // Tells a copy of the event, stamped with `msgType`, to every listener of that type.
    virtual void issueNotification(const NotifierEvent<T>& event, int msgType) {
        this->call(event, msgType);
    }
};

extern template class GenericNotifier<NotifierEvent<unsigned>>;
extern template class GenericNotifier<NotifierEvent<double>>;
extern template class GenericNotifier<NotifierEvent<bool>>;
extern template class GenericNotifier<NotifierEvent<Cookie>>;
extern template class NotifierEx<unsigned>;
extern template class NotifierEx<double>;
extern template class NotifierEx<bool>;
extern template class NotifierEx<Cookie>;
