// Observers of published values: `ValObserverBase` is one observed value, `ValObserverClient` the
// object that is told of all that it observes.
#pragma once

#include "platform/base/Object.h"

class ValObserverBase;

// Is told whenever a value that it observes changes. The thread is the one that changed the value.
class CUTROOM_API ValObserverClient : public virtual iVirtual {
public:
    ~ValObserverClient() override;

protected:
    friend class ValObserverBase;
    // `observer`, by identity, tells which of the observed values changed; it holds the new value.
    virtual void notifyValChanged(const ValObserverBase& observer) = 0;
    // The value is about to be changed in place. Does nothing here.
    virtual void preNotifyValChanged(const ValObserverBase& observer);
};

// One observed value, of whatever type.
class CUTROOM_API ValObserverBase {
public:
    // `client` (may be null: nobody is told) outlives the observer or is set to null before.
    explicit ValObserverBase(ValObserverClient* client = nullptr) noexcept : client_(client) {}
    ValObserverBase(const ValObserverBase&) = delete;
    ValObserverBase& operator=(const ValObserverBase&) = delete;
    virtual ~ValObserverBase();

    ValObserverClient* getClient() const noexcept { return client_; }
    void setClient(ValObserverClient* client) noexcept { client_ = client; }

protected:
    // Pass a change on to the client. The observer may be gone when they return.
    void tellChanged() const;
    void tellAboutToChange() const;

private:
    ValObserverClient* client_;
};
