#include "platform/messaging/ValObserver.h"

ValObserverClient::~ValObserverClient() = default;
void ValObserverClient::preNotifyValChanged(const ValObserverBase&) {}

ValObserverBase::~ValObserverBase() = default;

void ValObserverBase::tellChanged() const {
    if (client_)
        client_->notifyValChanged(*this);
}

void ValObserverBase::tellAboutToChange() const {
    if (client_)
        client_->preNotifyValChanged(*this);
}
