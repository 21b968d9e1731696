// `DocumentListener`: a base for what follows the changes of one document.
#pragma once

#include "bins/ContainerNotice.h"
#include "platform/base/Guard.h"
#include "platform/messaging/NotifyMsg.h"

// Registered with the document manager from its construction on. Told on the thread that changes
// the document, under the document's lock as a writer: it may read, and must not change a document
// or wait for a thread that does. Where documents change on other threads, heirs are constructed
// with the invalid cookie, are given the document when they are complete, and call `stopListening`
// in their destructors.
class CUTROOM_API DocumentListener {
public:
    // The invalid cookie: told nothing until a document is set.
    explicit DocumentListener(const Cookie& document = {});
    DocumentListener(const DocumentListener&) = delete;
    DocumentListener& operator=(const DocumentListener&) = delete;
    virtual ~DocumentListener();

    // The document that is followed, whether it exists or not. Any thread.
    Cookie getAssetID() const;
    void setAssetID(const Cookie& document);

protected:
    // Tells whether a message of the manager concerns the document: by default, whether it carries
    // a `ContainerNotice` that does.
    virtual bool isNotificationRelevant(const NotifyMsg& message) const;
    // Called for each relevant message; `notice` says what happened, also that the document came to
    // be or was destroyed.
    virtual void handleModificationsInternal(const ContainerNotice& notice) = 0;
    // Ends the registration; returns when no call is under way on another thread.
    void stopListening() noexcept;

private:
    void handleNotification(const NotifyMsg& message);

    mutable CriticalSection lock_{LockRank::leaf};
    Cookie document_ CUTROOM_GUARDED_BY(lock_);
    Kv::Ptr<Guard> registration_;
};
