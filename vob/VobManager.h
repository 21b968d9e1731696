// `VobManager`: the single owner of all Vobs. Makes and closes them, attaches clients, assigns the
// source, record and play roles, and routes the edit store's notices to the Vobs concerned.
//
// One per life of the process. User-interface thread only (asserted); takes no lock of its own, so
// every operation may be called from a client that is being told.
#pragma once

#include "platform/base/FrameRate.h"
#include "platform/base/Guard.h"
#include "platform/base/Strings.h"
#include "platform/host/ProcessLife.h"
#include "platform/messaging/Notifier.h"
#include "platform/store/EditModifications.h"
#include "platform/store/EditModule.h"
#include "vob/Vob.h"
#include "vob/VobClient.h"
#include "vob/VobModification.h"

#include <vector>

class CUTROOM_API VobManager : public Notifier {
public:
    using VobPtr = Kv::Ptr<Vob>;
    using VobVec = std::vector<VobPtr>;

    // The roles, as clients that follow one name them.
    enum eSignificantViewType : int { kViewRecord = 0, kViewSource = 1, kViewPlay = 2 };
    // Bits of the role setters: who is told. What is pending in a batch of a Vob that is not told
    // is dropped, except for the old source's.
    enum eRoleFlags : unsigned { kTellOld = 1, kTellNew = 2 };

    static VobManager& instance();
    static VobManager* theManager() { return &instance(); }

    // --- Vobs ----------------------------------------------------------------------------------
    // Each makes a Vob and appends it to the list. An empty group id takes a fresh one.
    VobPtr createVob(const EditModule& module, LightweightString<char> groupId = {});
    VobPtr createVob(const Cookie& edit, LightweightString<char> groupId = {});
    VobPtr createVob(const EditPtr& edit, LightweightString<char> groupId = {});
    // Attaches the client to the Vob of group `groupId` that views `edit`, else (with an empty id)
    // to the first Vob that views it, else to a new one. Gives the Vob: the present one, and
    // nothing is made, of a client that has one; empty for a null client.
    VobPtr create(VobClient* client, const Cookie& edit, LightweightString<char> groupId = {});
    // Attaches the client to `vob`, or to a new Vob on a new empty edit when that is empty. Gives
    // the Vob as above.
    VobPtr create(VobClient* client, const VobPtr& vob);
    // In the order of creation.
    const VobVec& getAllVobs() const noexcept { return vobs_; }
    // Those viewing `edit`; all for the invalid cookie.
    VobVec getAllVobs(const Cookie& edit) const;
    // The first that views the edit, or that has the group id; empty when there is none.
    VobPtr getVobWithCookie(const Cookie& edit) const;
    VobPtr getVobWithId(const LightweightString<char>& groupId) const;
    VobPtr getVobWithId(int legacyId) const;
    // The group id of the Vob with that legacy id; empty when there is none.
    LightweightString<char> getVobIdForLegacyId(int legacyId) const;
    // The number of Vobs viewing `edit`.
    unsigned numRefs(const Cookie& edit) const;
    // The Vobs of one group, in the order of creation; only `vob` when it stands alone. Those of
    // the playback group are eligible for the play role.
    VobVec getVobGroup(const VobPtr& vob) const;
    VobVec getPlaybackGroup(const VobPtr& vob) const;
    bool isGrouped(const VobPtr& vob) const;
    // The highest rate of the group's edits; no rate without edits.
    Kv::FrameRate getGroupFrameRate(const VobPtr& vob) const;
    // Takes a Vob out; false while it has clients and `force` is not set. Its view is saved in the
    // edit when no other Vob views it and the edit may be written; it loses its roles.
    bool closeVob(VobPtr vob, bool force);
    // Deletes the managed clients of a Vob. False when that leaves clients. At the project's exit
    // all clients that are still attached are deleted in the end: makers that keep clients as
    // values or by `unique_ptr` detach them before.
    bool destroyManagedClients(const VobPtr& vob);

    // --- clients -------------------------------------------------------------------------------
    // Attach an unattached client, then the clients that it manages. Nothing when there is no such
    // Vob.
    void open(VobClient* client, VobPtr vob);
    void open(VobClient* client, const LightweightString<char>& vobId);
    void open(VobClient* client, int legacyId);
    // Detaches the client; when no unmanaged client stays, detaches the rest and closes the Vob.
    // With `destroy` deletes the client afterwards. Nothing for null.
    void close(VobClient* client, bool destroy);
    // Detaches the clients that the client manages, then the client.
    void closeInternal(VobClient* client);
    // Moves a client, with those that it manages; the Vob that it leaves closes as with `close`.
    // `moveToNewVob` makes the Vob, on the same edit; with `keepModule` through the same module,
    // with `sameGroup` in the same group. It gives the new Vob; empty for an unattached client.
    void moveToVob(VobClient* client, VobPtr vob);
    VobPtr moveToNewVob(VobClient* client, bool keepModule, bool sameGroup);

    // --- roles ---------------------------------------------------------------------------------
    VobPtr getSourceMachine() const noexcept { return source_; }
    VobPtr getRecordMachine() const noexcept { return record_; }
    VobPtr getPlayMachine() const noexcept { return play_; }
    VobPtr getPreviousSourceMachine() const noexcept { return previousSource_; }
    VobPtr getVob(eSignificantViewType role) const;
    // Give a role away, with all that follows for the others. `flags`: eRoleFlags. Ignored for a
    // Vob that is not eligible, while the transport is between two states, and at exit (then a role
    // may only be cleared).
    void setSourceMachine(Vob* vob, unsigned flags);
    void setRecordMachine(Vob* vob, unsigned flags);
    void setPlayMachine(Vob* vob, bool makeSource);
    // Only move the role: status bit, message, sticky clients.
    void setSourceMachineRaw(Vob* vob);
    void setRecordMachineRaw(Vob* vob);
    void setPlayMachineRaw(Vob* vob);
    // Takes every role away from a Vob.
    void removeFocusFrom(Vob* vob);
    // False while the transport is between two states, and at exit.
    bool isPlayMachineAssignmentValid() const;
    // Gives the record role to a Vob on an edit of log type 2, taking over a lock of another user.
    void autoEnableRecordStatus(Vob* vob);
    // The messages told of roles: the text is the Vob's edit cookie, the object the Vob (none when
    // nobody has the role).
    int focusChangedMsgType() const noexcept { return focusChanged_; }
    int sourceChangedMsgType() const noexcept { return sourceChanged_; }
    int recordChangedMsgType() const noexcept { return recordChanged_; }

    // --- sticky clients: they follow a role from Vob to Vob ------------------------------------
    // Unattached while nobody has the role. The Vob that they leave stays open.
    void addStickyClient(VobClient* client, eSignificantViewType role);
    void removeStickyClient(VobClient* client);
    void removeStickyClient(VobClient* client, eSignificantViewType role);
    bool isStickyClient(VobClient* client) const;
    void updateStickyClient(VobClient* client, const VobPtr& vob);
    void updateStickyClients(eSignificantViewType role);

    // --- changes of edits ----------------------------------------------------------------------
    void informEditAltered(const Cookie& edit, const EditModifications& editChanges,
                           const VobModification& change);
    void informVobOfEditAlteration(VobPtr vob, const EditModifications& editChanges,
                                   const VobModification& change);
    void saveViewStateInEdit(VobPtr vob);

    // Whether `Vob::getTotalDuration` goes by the selected channels.
    static bool getTotalDurationBySelection() noexcept { return totalDurationBySelection_; }
    static void setTotalDurationBySelection(bool on) noexcept { totalDurationBySelection_ = on; }

    // Writes every Vob to the log.
    void debugVobs();

private:
    friend class cutroom::ProcessSingleton<VobManager>;
    friend class VobClient;
    // Null while there is none.
    static VobManager* existing() noexcept;
    VobManager();
    ~VobManager() override;

    struct StickyClient {
        VobClient* client;
        eSignificantViewType role;
    };

    VobPtr append(VobPtr vob);
    bool isOpen(const Vob& vob) const;
    static void detach(Vob& vob, VobClient* client);
    void closeIfAbandoned(const VobPtr& vob);
    bool isSticky(const VobClient* client, eSignificantViewType role) const;
    bool isRoleChangeAllowed(Vob* vob, Vob::eStatus status) const;
    void issueRoleMessage(int msgType, Vob* vob);
    static void moveStatus(const VobPtr& from, Vob* to, Vob::eStatus status);
    void becomeSource(const VobPtr& vob, bool tell);
    void loseRecord(const VobPtr& vob, bool tell);
    void becomeRecord(const VobPtr& vob, bool tell);
    void clearPlayMachine();
    void registerWithEditManager();
    void informEditAlteredInternal(const Cookie& edit, const EditModifications& editChanges,
                                   const VobModification& change);
    static bool editModificationFilter(const NotifyMsg& message);
    void handleEditModifications(const NotifyMsg& message);
    void prepareForEditDeletion(const NotifyMsg& message);
    void handleEditDeletion(const NotifyMsg& message);
    void handleProjectExit(const NotifyMsg& message);

    VobVec vobs_;
    VobPtr record_;
    VobPtr source_;
    VobPtr previousSource_;
    VobPtr play_;
    std::vector<StickyClient> sticky_;
    int focusChanged_ = 0;
    int sourceChanged_ = 0;
    int recordChanged_ = 0;
    std::vector<Kv::Ptr<Guard>> registrations_;
    static inline bool totalDurationBySelection_ = false;
};
