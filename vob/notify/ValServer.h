// `ValServer<T>`: a value that others may follow, and `ValManagerBase<T>`, which may keep it in
// bounds.
//
// Instances exist for unsigned, double, bool and Cookie; a folder that publishes another type `T`
// (copied and compared with ==) declares `extern template class ValServer<T>` beside it and
// instantiates it.
#pragma once

#include "platform/base/Log.h"
#include "platform/base/Object.h"
#include "platform/messaging/ValClient.h"
#include "platform/messaging/ValServerBase.h"
#include "vob/notify/GenericNotifier.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

template <class T> class ValServer;

// Is asked before a server takes a new value.
template <class T> class CUTROOM_API ValManagerBase {
public:
    virtual ~ValManagerBase() = default;
    // May change `value`, which `server` is about to take. False: the server keeps what it has and
    // tells nobody.
    virtual bool validate(ValServer<T>& server, T& value) = 0;
};

// The value is read and changed on one thread; listeners register and leave on any. Tellings,
// threads and locks: platform/messaging/NotifierBase.h. Assigning a value tells it, also when it
// equals the one before.
template <class T>
class CUTROOM_API ValServer : public NotifierEx<T>,
                              public ValServerBase,
                              public LastValServer,
                              public virtual Kv::InternalRefCount,
                              public virtual iVirtual {
public:
    // `manager` (may be null) outlives the server or is taken away before.
    explicit ValServer(const T& value = T(), ValManagerBase<T>* manager = nullptr)
        : value_(value), manager_(manager) {}
    // A copy takes the value; listeners, manager and debug mode stay behind.
    ValServer(const ValServer& other)
        : Kv::InternalRefCount(), iVirtual(), NotifierEx<T>(), ValServerBase(), LastValServer(),
          value_(other.value_) {}
    ~ValServer() override = default;

    // Tells a copy of the event, stamped with `msgType`, to every listener of that type.
    void issueNotification(const NotifierEvent<T>& event, int msgType) override;
    // Both give `updateAndNotify` the new value, whatever it answers; a server assigned to itself
    // tells its value again.
    virtual ValServer& operator=(const ValServer& other); // NOLINT(*-unhandled-self-assignment)
    virtual ValServer& operator=(const T& value);
    // Compares the values.
    virtual bool operator==(const ValServer& other) const { return value_ == other.value_; }
    // Asks the manager, stores the value it leaves and tells it. False, and nothing changed or
    // told, when the manager refuses. Does not compare with the old value.
    virtual bool updateAndNotify(const T& value);

    // Tell the current value, copied at the start, to the listeners of the type; nothing is locked
    // when there are none.
    void notifyValChanged() override;
    void preNotifyValChanged() override;
    std::uint16_t numClients() const noexcept override;

    const T& getValue() const noexcept { return value_; }
    operator T() const { return value_; }
    // The value itself, to be changed without telling anybody.
    T& getDataRef() noexcept { return value_; }
    ValManagerBase<T>* getManager() const noexcept { return manager_; }
    void setManager(ValManagerBase<T>* manager) noexcept { manager_ = manager; }
    // In debug mode each telling writes a line to the log.
    void setDebugMode(bool on) noexcept { debug_ = on; }

private:
    void tellValue(int msgType, const char* what);

    T value_;
    ValManagerBase<T>* manager_ = nullptr;
    bool debug_ = false;
};

// ------------------------------------------------------------------------------------------------

template <class T>
void ValServer<T>::issueNotification(const NotifierEvent<T>& event, int msgType) {
    if (debug_)
        LogBoth("ValServer %p: telling type %d to %u clients\n", static_cast<const void*>(this),
                msgType, static_cast<unsigned>(numClients()));
    this->call(event, msgType);
}

// NOLINTNEXTLINE(*-unhandled-self-assignment)
template <class T> ValServer<T>& ValServer<T>::operator=(const ValServer& other) {
    updateAndNotify(other.value_);
    return *this;
}

template <class T> ValServer<T>& ValServer<T>::operator=(const T& value) {
    updateAndNotify(value);
    return *this;
}

template <class T> bool ValServer<T>::updateAndNotify(const T& value) {
    if (manager_) {
        T wanted(value);
        if (!manager_->validate(*this, wanted))
            return false;
        value_ = std::move(wanted);
    } else {
        value_ = value;
    }
    notifyValChanged();
    return true;
}

template <class T> void ValServer<T>::notifyValChanged() {
    this->noteChange();
    tellValue(valChangedMsgType, "changed");
}

template <class T> void ValServer<T>::preNotifyValChanged() {
    tellValue(preValChangedMsgType, "about to change");
}

template <class T> void ValServer<T>::tellValue(int msgType, const char* what) {
    if (!this->hasListeners())
        return;
    if (debug_)
        LogBoth("ValServer %p: value %s, %u clients\n", static_cast<const void*>(this), what,
                static_cast<unsigned>(numClients()));
    const NotifierEvent<T> event(msgType, value_, this);
    this->tellAll(event, msgType);
}

template <class T> std::uint16_t ValServer<T>::numClients() const noexcept {
    return static_cast<std::uint16_t>(
        std::min<std::size_t>(this->numListeners(), std::numeric_limits<std::uint16_t>::max()));
}

extern template class ValServer<unsigned>;
extern template class ValServer<double>;
extern template class ValServer<bool>;
extern template class ValServer<Cookie>;
extern template class ValClient<unsigned>;
extern template class ValClient<double>;
extern template class ValClient<bool>;
extern template class ValClient<Cookie>;
