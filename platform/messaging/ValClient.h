// `ValClient<T>`: follows one published value.
//
// A client meets its server in `registerWith` alone; the server's class belongs to a higher layer
// and is complete where a client is registered ("vob/notify/ValServer.h").
#pragma once

#include "platform/base/Guard.h"
#include "platform/messaging/Callback.h"
#include "platform/messaging/NotifierEvent.h"
#include "platform/messaging/ValObserver.h"
#include "platform/messaging/ValServerBase.h"

#include <array>
#include <utility>

template <class T> class ValServer;

// Holds the value last told and passes each change on to its `ValObserverClient`. Used on the
// thread on which the value changes, and ended there. Neither copied nor moved.
template <class T> class CUTROOM_API ValClient : public ValObserverBase {
public:
    explicit ValClient(ValObserverClient* client = nullptr) : ValObserverBase(client) {}
    ~ValClient() override { deregister(); }

    // Follows `server` (null: none) in place of the one before. Takes its current value without
    // telling the client. Counts as one listener of the server, or as two when it is to be told
    // before changes in place as well.
    void registerWith(ValServer<T>* server, bool alsoBefore = false);
    // Follows nothing any more; keeps the value.
    void deregister() noexcept;

    // The server followed; null when there is none or it is gone.
    ValServer<T>* getServer() const noexcept { return server_; }
    bool isRegistered() const noexcept { return server_ != nullptr; }

    // The value last told, or taken at registration; T() before.
    const T& getValue() const noexcept { return value_; }
    operator const T&() const noexcept { return value_; }
    // Lets go of the value held, until the next change.
    void dropValue() { value_ = T(); }

private:
    class Link;

    void changed(const NotifierEvent<T>& event);

    ValServer<T>* server_ = nullptr;
    T value_{};
    Kv::Ptr<Link> link_;
    std::array<Kv::Ptr<Guard>, 2> guards_;
};

// ------------------------------------------------------------------------------------------------

// What the server calls. Outlives its client when that goes while it is being told.
template <class T> class ValClient<T>::Link final : public iCallbackBase<int, NotifierEvent<T>> {
public:
    explicit Link(ValClient& client) noexcept : client_(&client) {}

    int call(const NotifierEvent<T>& event) override {
        if (client_)
            client_->changed(event);
        return 0;
    }
    void registrationEnded() noexcept override {
        if (client_)
            client_->server_ = nullptr;
    }
    // The client goes, or follows another server.
    void cut() noexcept { client_ = nullptr; }

private:
    ValClient* client_;
};

template <class T> void ValClient<T>::registerWith(ValServer<T>* server, bool alsoBefore) {
    deregister();
    if (!server)
        return;
    link_ = Kv::Ptr<Link>(new Link(*this));
    const Kv::Ptr<iCallbackBase<int, NotifierEvent<T>>> callback(link_);
    guards_[0] = server->registerNotification(callback, ValServerBase::valChangedMsgType);
    if (alsoBefore)
        guards_[1] = server->registerNotification(callback, ValServerBase::preValChangedMsgType);
    server_ = server;
    value_ = server->getValue();
}

template <class T> void ValClient<T>::deregister() noexcept {
    for (Kv::Ptr<Guard>& guard : guards_)
        guard.reset();
    if (link_)
        link_->cut();
    link_.reset();
    server_ = nullptr;
}

template <class T> void ValClient<T>::changed(const NotifierEvent<T>& event) {
    value_ = event.getValue();
    if (event.getMsgType() == ValServerBase::preValChangedMsgType)
        tellAboutToChange();
    else
        tellChanged();
}
