#include "sync/MultiVobClientInternal.h"

MultiVobClientInternal::MultiVobClientInternal(iVobSynchroniser& synchroniser)
    : synchroniser_(&synchroniser) {
    setPriority(kClientPrioritySynchroniser);
    setManagementDetails(kClientUnmanaged);
}

// A client that is destroyed along with its Vob must not leave the synchroniser suspended. Whoever
// is told that the suspension ends may destroy the synchroniser, so this client leaves it first.
MultiVobClientInternal::~MultiVobClientInternal() {
    const bool leavesSuspended = hasSuspended_ && hasOwner() && !synchroniser_->getSyncEnabled();
    leaveOwner();
    if (leavesSuspended)
        synchroniser_->setSyncEnabled(true);
}

void MultiVobClientInternal::handleModifications(const EditModifications& editChanges,
                                                 const VobModification& change) {
    const auto suspends = [this] {
        return getVob() && (getVob()->getTimeChangeFlags() & Vob::kTimeSuspendsSync) != 0;
    };
    const bool moved = change.includes(kVobTime);
    if (!hasSuspended_ && !(moved && suspends())) { // the usual case
        synchroniser_->handleModifications(this, editChanges, change);
        return;
    }
    const cutroom::Lifeline::Watch watch(life_);
    if (moved && suspends() && synchroniser_->getSyncEnabled()) {
        hasSuspended_ = true;
        synchroniser_->setSyncEnabled(false);
        if (!watch.alive())
            return;
    }
    synchroniser_->handleModifications(this, editChanges, change);
    if (!watch.alive() || !hasSuspended_ || !moved || suspends() || synchroniser_->getSyncEnabled())
        return;
    hasSuspended_ = false;
    synchroniser_->setSyncEnabled(true);
}
