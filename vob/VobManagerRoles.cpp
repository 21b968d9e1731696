// The roles: source, record and play machine, and who is told when they move.
#include "platform/base/Log.h"
#include "platform/host/ConsoleFocus.h"
#include "platform/host/Redraw.h"
#include "platform/host/TransitStatus.h"
#include "platform/messaging/UiThread.h"
#include "platform/prefs/ShutdownState.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/Edit.h"
#include "vob/VobManager.h"
#include "vob/VobModificationBatch.h"

#include <cassert>

namespace {

// While the transport is on its way from one state to another, and while the program ends, roles
// are not given.
bool rolesAreHeld() {
    return TransitStatus::manager().getStatus() == kTransitInProgress || ShutdownState::isExiting();
}

// Tells what a role setter did to a Vob as one change, or drops it.
class RoleChange {
public:
    RoleChange(const Kv::Ptr<Vob>& vob, bool tell) : vob_(vob), tell_(tell), batch_(vob) {}
    ~RoleChange() {
        if (!tell_)
            vob_->clearModifications();
    }
    RoleChange(const RoleChange&) = delete;
    RoleChange& operator=(const RoleChange&) = delete;

private:
    const Kv::Ptr<Vob> vob_;
    const bool tell_;
    const VobModificationBatch batch_; // ends after the destructor has dropped what is pending
};

} // namespace

VobManager::VobPtr VobManager::getVob(eSignificantViewType role) const {
    switch (role) {
    case kViewRecord:
        return record_;
    case kViewSource:
        return source_;
    case kViewPlay:
        return play_;
    }
    return {};
}

bool VobManager::isPlayMachineAssignmentValid() const { return !rolesAreHeld(); }

bool VobManager::isRoleChangeAllowed(Vob* vob, Vob::eStatus status) const {
    return !rolesAreHeld() && (!vob || vob->canAcceptStatus(status));
}

// --- only moving a role --------------------------------------------------------------------------

void VobManager::issueRoleMessage(int msgType, Vob* vob) {
    const Cookie edit = vob ? vob->getCookie() : Cookie();
    issueNotification(NotifyMsg(Kv::Ptr<iObject>(vob), edit.asString()), msgType);
}

void VobManager::moveStatus(const VobPtr& from, Vob* to, Vob::eStatus status) {
    if (from)
        from->setStatus(from->getStatus() & ~unsigned{status});
    if (to)
        to->setStatus(to->getStatus() | status);
}

void VobManager::setSourceMachineRaw(Vob* vob) {
    const VobPtr before = source_;
    moveStatus(before, vob, Vob::kStatusSource);
    previousSource_ = before;
    source_ = vob;
    issueRoleMessage(sourceChanged_, vob);
    updateStickyClients(kViewSource);
}

void VobManager::setRecordMachineRaw(Vob* vob) {
    const VobPtr before = record_;
    moveStatus(before, vob, Vob::kStatusRecord);
    record_ = vob;
    issueRoleMessage(recordChanged_, vob);
    updateStickyClients(kViewRecord);
}

void VobManager::setPlayMachineRaw(Vob* vob) {
    const VobPtr before = play_;
    moveStatus(before, vob, Vob::kStatusPlay);
    play_ = vob;
    issueRoleMessage(focusChanged_, vob);
    updateStickyClients(kViewPlay);
}

// --- the source ----------------------------------------------------------------------------------

void VobManager::setSourceMachine(Vob* vob, unsigned flags) {
    assert(cutroom::isUiThread());
    if (source_ == vob)
        return;
    if (!isRoleChangeAllowed(vob, Vob::kStatusSource)) {
        if (!vob)
            setSourceMachineRaw(nullptr);
        return;
    }
    const VobPtr wanted = vob;
    setSourceMachineRaw(vob);
    if (const VobPtr previous = previousSource_; previous && (flags & kTellOld) != 0)
        previous->addModification(kVobLostSource);
    // A client that was told may have given the role to another Vob by now.
    if (wanted && source_ == wanted)
        becomeSource(wanted, (flags & kTellNew) != 0);
}

void VobManager::becomeSource(const VobPtr& vob, bool tell) {
    const RoleChange change(vob, tell);
    vob->addModification(kVobBecameSource);
    if (record_ == vob) {
        setRecordMachineRaw(nullptr);
        vob->addModification(kVobLostRecord);
    }
    if (play_ && play_ != source_ && play_ != record_)
        setConsoleFocus(vob.get());
}

// --- the record machine --------------------------------------------------------------------------

void VobManager::setRecordMachine(Vob* vob, unsigned flags) {
    assert(cutroom::isUiThread());
    if (record_ == vob)
        return;
    if (!isRoleChangeAllowed(vob, Vob::kStatusRecord)) {
        if (!vob)
            setRecordMachineRaw(nullptr);
        return;
    }
    const Glib::UpdateDeferrer deferred;
    const VobPtr wanted = vob;
    const VobPtr before = record_;
    setRecordMachineRaw(vob);
    if (before)
        loseRecord(before, (flags & kTellOld) != 0);
    if (wanted && record_ == wanted) {
        becomeRecord(wanted, (flags & kTellNew) != 0);
        setConsoleFocus(wanted.get());
    }
}

// Tells a Vob that it is no longer the record machine. When there is no other machine it becomes
// the source, so that the user still sees it.
void VobManager::loseRecord(const VobPtr& vob, bool tell) {
    const RoleChange change(vob, tell);
    vob->addModification(kVobLostRecord);
    if (!record_ && !source_ && !previousSource_ && vob->canAcceptStatus(Vob::kStatusSource)) {
        setSourceMachineRaw(vob.get());
        vob->addModification(kVobBecameSource);
    }
}

void VobManager::becomeRecord(const VobPtr& vob, bool tell) {
    const RoleChange change(vob, tell);
    vob->addModification(kVobBecameRecord);
    if (source_ != vob)
        return;
    if (previousSource_ != vob)
        setSourceMachine(VobPtr(previousSource_).get(), kTellOld | kTellNew);
    if (source_ == vob) // the previous source could not take the role
        setSourceMachineRaw(nullptr);
    vob->addModification(kVobLostSource);
}

void VobManager::autoEnableRecordStatus(Vob* vob) {
    if (!vob || record_ == vob)
        return;
    const EditPtr edit = vob->getEdit();
    if (!edit || edit->getLogType() != kLogTypeEdit)
        return;
    PermissionsManager& permissions = PermissionsManager::instance();
    const Cookie& cookie = vob->getCookie();
    if (permissions.isReadOnly(cookie) && !permissions.getLockHolder(cookie).empty())
        if (const cutroom::Status taken = permissions.takeOver(cookie); !taken)
            LogBoth("VobManager::autoEnableRecordStatus() : %s\n", taken.text().c_str());
    setRecordMachine(vob, kTellOld | kTellNew);
}

// --- the play machine ----------------------------------------------------------------------------

void VobManager::setPlayMachine(Vob* vob, bool makeSource) {
    assert(cutroom::isUiThread());
    if (play_ == vob)
        return;
    if (!isRoleChangeAllowed(vob, Vob::kStatusPlay)) {
        if (!vob)
            clearPlayMachine();
        return;
    }
    const VobPtr wanted = vob;
    const VobPtr before = play_;
    const bool takesSource = makeSource && vob && record_ != vob && source_ != vob &&
                             vob->canAcceptStatus(Vob::kStatusSource);
    if (takesSource)
        setSourceMachineRaw(vob);
    setPlayMachineRaw(vob);
    if (before) {
        const bool lostSource = takesSource && previousSource_ == before;
        before->registerWithPlayServer(false);
        before->addModification(kVobLostPlay | (lostSource ? unsigned{kVobLostSource} : 0u));
    }
    if (wanted && play_ == wanted) {
        wanted->registerWithPlayServer(true);
        wanted->addModification(kVobBecamePlay | (takesSource ? unsigned{kVobBecameSource} : 0u));
    }
}

// Ends the role. The Vob that had it is no longer moved by the transport either.
void VobManager::clearPlayMachine() {
    const VobPtr before = play_;
    setPlayMachineRaw(nullptr);
    if (before)
        before->registerWithPlayServer(false);
}

void VobManager::removeFocusFrom(Vob* vob) {
    assert(cutroom::isUiThread());
    if (!vob)
        return;
    const VobPtr keep = vob;
    if (play_ == vob)
        clearPlayMachine();
    if (record_ == vob)
        setRecordMachineRaw(nullptr);
    if (source_ == vob)
        setSourceMachineRaw(nullptr);
    if (previousSource_ == vob)
        previousSource_.reset();
    if (getConsoleFocus() == vob)
        setConsoleFocus(nullptr);
}
