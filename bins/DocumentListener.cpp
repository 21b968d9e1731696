#include "bins/DocumentListener.h"

#include "bins/DocumentManager.h"

DocumentListener::DocumentListener(const Cookie& document) : document_(document) {
    DocumentManager& manager = DocumentManager::instance();
    registration_ = manager.registerNotification(
        makeCallback(this, &DocumentListener::handleNotification), manager.changeMsgType());
}

DocumentListener::~DocumentListener() = default;

Cookie DocumentListener::getAssetID() const {
    const CriticalSection::Lock lock(lock_);
    return document_;
}

void DocumentListener::setAssetID(const Cookie& document) {
    const CriticalSection::Lock lock(lock_);
    document_ = document;
}

bool DocumentListener::isNotificationRelevant(const NotifyMsg& message) const {
    const auto* const notice = message.getObjectAs<ContainerNotice>();
    return notice && notice->concerns(getAssetID());
}

void DocumentListener::stopListening() noexcept { registration_.reset(); }

void DocumentListener::handleNotification(const NotifyMsg& message) {
    if (!isNotificationRelevant(message))
        return;
    if (const auto* const notice = message.getObjectAs<ContainerNotice>())
        handleModificationsInternal(*notice);
}
