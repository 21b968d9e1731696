#include "vob/VobMonitor.h"

#include "vob/ClientWatch.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"

#include <utility>

VobMonitor::VobMonitor(Vob* vob) : VobClient(vob, kClientPriorityMonitor, kClientManaged) {
    if (vob)
        takeValues(*vob);
}

VobMonitor::VobMonitor(const VobMonitor& other)
    : Kv::InternalRefCount(),
      VobClient(other.getVob(), other.getPriority(), other.getManagementDetails()),
      time_(other.time_), viewCookie_(other.viewCookie_), editChanges_(other.editChanges_),
      vobChange_(other.vobChange_), mixerBypass_(other.mixerBypass_) {}

VobMonitor::VobMonitor(VobMonitor&& other) : VobMonitor(std::as_const(other)) {
    VobManager::instance().closeInternal(&other);
}

VobMonitor::~VobMonitor() = default;

const char* VobMonitor::idstring() const { return "VobMonitor"; }

void VobMonitor::setVob(Vob* vob) {
    VobClient::setVob(vob);
    if (vob)
        takeValues(*vob);
}

void VobMonitor::takeValues(const Vob& vob) {
    time_.getDataRef() = vob.getCurrentTime();
    viewCookie_.getDataRef() = vob.getMasterViewCookie();
}

void VobMonitor::attachTo(Vob* vob) {
    const cutroom::ClientWatch watch(this);
    VobManager::instance().open(this, vob);
    if (vob && watch.alive() && getVob() == vob)
        time_ = vob->getCurrentTime();
}

// When an edit is replaced that the play machine does not show, neither its time nor its cookie is
// published: the observers follow the play machine.
void VobMonitor::handleModifications(const EditModifications& editChanges,
                                     const VobModification& change) {
    const Kv::Ptr<Vob> vob = getVob();
    const cutroom::ClientWatch watch(this);
    if (!vob)
        return;
    if (!editChanges.empty())
        editChanges_ = editChanges;
    if (!watch.alive() || getVob() != vob.get())
        return;
    const bool transient = (vob->getTimeChangeFlags() & Vob::kTimeTransient) != 0;
    if (change.includes(kVobTime) && !transient) {
        time_ = change.getTime();
    } else if (change.includes(kVobViewEdits)) {
        viewCookie_ = vob->getMasterViewCookie();
    } else if (change.includes(kVobEditReplaced)) {
        if (VobManager::instance().getPlayMachine() != vob)
            return;
        time_.getDataRef() = vob->getCurrentTime();
        viewCookie_ = vob->getMasterViewCookie();
    } else if (change.valid()) {
        vobChange_ = change.getType();
    }
}
