#include "platform/host/TransitStatus.h"

#include "platform/host/Host.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"

cutroom::iTransitStatusManager::~iTransitStatusManager() = default;

cutroom::iTransitStatusManager& TransitStatus::manager() noexcept {
    return cutroom::Host::transit();
}

int TransitStatus::playStartedMsgType() {
    static const int type = NotifyMsgTypeDictionary::instance().intern("playStarted");
    return type;
}

int TransitStatus::playStoppedMsgType() {
    static const int type = NotifyMsgTypeDictionary::instance().intern("playStopped");
    return type;
}
