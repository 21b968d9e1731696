// `MultiVobClientInternal`: the client by which a synchroniser hears of one of its Vobs.
#pragma once

#include "sync/Lifeline.h"
#include "sync/iVobSynchroniser.h"

// Passes every modification of its Vob on. Suspends synchronisation while the Vob's time changes
// carry the flag for that (`Vob::kTimeSuspendsSync`): from the first such change until after the
// first one without it, which is not handed on either. Somebody who switches synchronisation on
// meanwhile does not end the suspension: it ends with the first such change that finds it off.
class CUTROOM_API MultiVobClientInternal : public iVobSynchroniser::iVobListener {
public:
    // Unattached, with the priority of synchronisers, unmanaged. `synchroniser` outlives it.
    explicit MultiVobClientInternal(iVobSynchroniser& synchroniser);
    ~MultiVobClientInternal() override;

    iVobSynchroniser& synchroniser() const noexcept { return *synchroniser_; }
    // It has switched synchronisation off, to switch it on again.
    bool hasSuspendedSync() const noexcept { return hasSuspended_; }

    void handleModifications(const EditModifications& editChanges,
                             const VobModification& change) override;
    const char* idstring() const override { return "MultiVobClientInternal"; }

private:
    iVobSynchroniser* synchroniser_;
    bool hasSuspended_ = false;
    cutroom::Lifeline life_;
};
