// `VobClient`: whatever shows or follows a viewed edit: a viewer, a timeline, a synchroniser's
// link.
//
// Owned by its maker (a value, `unique_ptr`, raw), never by a counted pointer. Made, used, told and
// destroyed on the user-interface thread. Attached to at most one Vob at a time, through the
// `VobManager`. The base constructor attaches and the base destructor detaches, so overrides do not
// run yet, or any more, for what happens then: an heir that manages clients detaches first.
#pragma once

#include "bins/iCookieContainer.h"
#include "bins/iEditContainer.h"
#include "platform/base/IdStamp.h"
#include "platform/host/PlayState.h"
#include "platform/store/EditModifications.h"
#include "platform/store/EditModule.h"
#include "platform/store/EditPtr.h"
#include "vob/VobModification.h"

#include <cstdint>

class Vob;
class VobManager;

// Clients with larger values are told first. Embedders may use any value.
enum eClientPriority : std::int32_t {
    kClientPriorityLowest = 0,
    kClientPriorityMonitor = 1,
    kClientPrioritySynchroniser = 2,
    kClientPriorityViewer = 3,
    kClientPriorityHighest = 4,
};

// Who looks after a client. 0: nobody; as long as a Vob has such a client it stays open. Embedders
// may use any other value for clients that are managed.
enum eClientManagementDetails : std::int32_t {
    kClientUnmanaged = 0,
    kClientManaged = 1,
};

class CUTROOM_API VobClient : public iCookieContainer, public iEditContainer {
public:
    // Unattached.
    VobClient();
    // Attached to `vob`; unattached when it is null.
    VobClient(Vob* vob, eClientPriority priority, eClientManagementDetails details);
    // Attached to `vob`; without one to a Vob on `edit`, made or found by the manager; unattached
    // when `edit` is invalid too.
    VobClient(Cookie edit, Vob* vob, eClientPriority priority, eClientManagementDetails details);
    VobClient(const VobClient&) = delete;
    VobClient& operator=(const VobClient&) = delete;
    // Detaches (`VobManager::close(this, false)`).
    ~VobClient() override;

    // --- what a client may override ------------------------------------------------------------
    // The invalid cookie.
    Cookie getContainerID() const override;
    // The Vob's edit, with the marked region when the module is marked; empty without Vob.
    LightweightVector<AssetReference> getCookies() const override;
    // The edit's name; the text for "no edit" without one.
    LightweightString<wchar_t> getName() const override;
    // The name of the edit's log type.
    LightweightString<wchar_t> getTypeName() const override;
    bool add(const LightweightVector<AssetReference>& assets) override;
    bool containsType(CookieType type) const override;
    // Something changed in the edit, in how it is viewed, or both. Called under the Vob's client
    // lock; the client may change the Vob, add, remove, move and destroy clients, itself too. What
    // it throws is logged and goes no further. The same holds for all calls below.
    virtual void handleModifications(const EditModifications& editChanges,
                                     const VobModification& change);
    // Another client was attached to, or an unmanaged one detached from, this one's Vob. When 500
    // tellings are inside one another, further ones reach nobody until the outermost is over.
    virtual void notifyClientAdded(VobClient* client);
    virtual void notifyClientRemoved(VobClient* client);
    virtual void notifyPlayStateChange(PlayStateNotifyType change);
    // An edit that this client's Vob does not show has changed in a way that may matter to it.
    virtual void notifyOtherEditAltered(const Cookie& edit, const EditModifications& changes);
    // The Vob gained (true) or lost the console focus.
    virtual void handleConsoleFocus(bool hasFocus);
    virtual void handleMessage(const LightweightString<char>& message);
    // Tells whether the client may be destroyed on behalf of `requester`: when it is unmanaged.
    virtual bool isAutoDestroyable(VobClient* requester) const;
    // Writes what it knows of itself to the log, without a line end. Nothing by default.
    virtual void debug();
    // The client's kind, by which it is found and timed: "VobClient".
    virtual const char* idstring() const;
    // The clients that come and go with this one. None.
    virtual LightweightVector<VobClient*> getManagedClients();

protected:
    // Attached to `vob`, or detached (null). Heirs call it on their base.
    virtual void setVob(Vob* vob);

public:
    // --- of the interfaces ---------------------------------------------------------------------
    Cookie getAssetID() const override;
    AssetReference getAssetReference() const override;
    LightweightString<wchar_t> getAssetName() const override;
    eLogType getLogType() const override;

    // --- fixed ---------------------------------------------------------------------------------
    // Null while unattached.
    Vob* getVob() const noexcept { return vob_; }
    eClientPriority getPriority() const noexcept { return priority_; }
    // Puts the Vob's clients in order again when attached.
    void setPriority(eClientPriority priority);
    eClientManagementDetails getManagementDetails() const noexcept { return details_; }
    void setManagementDetails(eClientManagementDetails details) noexcept { details_ = details; }
    // Fresh for every client ever made.
    const IdStamp& uid() const noexcept { return uid_; }

    // Of the Vob; empty answers while unattached.
    Cookie getCookie() const;
    EditPtr getEdit() const;
    EditModule getEditModule() const;
    LightweightString<char> getGroup() const;

private:
    friend class Vob;
    friend class VobManager;

    Vob* vob_ = nullptr;
    eClientPriority priority_ = kClientPriorityLowest;
    eClientManagementDetails details_ = kClientUnmanaged;
    IdStamp uid_;
};
