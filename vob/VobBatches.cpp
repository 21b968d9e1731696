// Batches of changes of a Vob, and how their union comes to be told.
#include "platform/messaging/UiThread.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"

#include <utility>

void Vob::beginModifications() noexcept { batchDepth_.fetch_add(1); }

void Vob::endModifications() {
    if (batchDepth_.fetch_sub(1) != 1)
        return;
    VobModification ready(0);
    {
        // Looked at and taken in one go, or another thread could take it in between and an empty
        // change be told.
        const CriticalSection::Lock lock(pendingLock_);
        if (!pending_.valid() || batchDepth_.load(std::memory_order_relaxed) != 0)
            return;
        std::swap(ready, pending_);
    }
    ready.setTime(getCurrentTime());
    tellReady(ready);
}

void Vob::addModification(const VobModification& change) {
    VobModification ready(0);
    {
        const CriticalSection::Lock lock(pendingLock_);
        if (pending_.valid())
            pending_.merge(change);
        else
            pending_ = change;
        if (batchDepth_.load(std::memory_order_relaxed) != 0)
            return;
        std::swap(ready, pending_);
    }
    ready.setTime(getCurrentTime());
    tellReady(ready);
}

void Vob::clearModifications() {
    const CriticalSection::Lock lock(pendingLock_);
    pending_ = VobModification(0);
}

void Vob::tellReady(const VobModification& change) {
    const bool mixFollows = change.includes(kVobSelection);
    if (!cutroom::isUiThread()) {
        informClientsAsync(change);
        if (mixFollows)
            cutroom::postToUiThread([self = keepAlive()] {
                if (self)
                    self->updateAudioMix();
            });
        return;
    }

    const Kv::Ptr<Vob> self = keepAlive();
    // A telling inside this one leaves the flag to the one that raised it.
    const bool byPlayback =
        change.includes(kVobTime) && playing_ && (getTimeChangeFlags() & kTimeByPlayback) == 0;
    if (byPlayback)
        timeChangeFlags_ |= kTimeByPlayback;
    informClients(change);
    if (mixFollows)
        updateAudioMix();
    if (byPlayback)
        timeChangeFlags_ &= ~unsigned{kTimeByPlayback};
}

// --- descriptions of what an edit's own change is to be reported as ------------------------------

void Vob::describe(const VobModification& change) {
    const CriticalSection::Lock lock(pendingLock_);
    description_ = change;
    described_ = change.valid();
}

void Vob::setChangeDescription(const EditModifications& editChanges, VobModification change) {
    if (!edit_)
        return;
    if (change.includes(kVobMarks))
        storeMarkTime(kChanAllSelected, change.getMarkTime(), Kv::MarkTypes::In);
    if (change.includes(kVobTime))
        storeTime(change.getTime());
    if (!editChanges.empty()) {
        describe(change);
        edit_->addModification(editChanges, true);
    } else if (change.valid()) {
        VobManager::instance().informEditAltered(cookie_, editChanges, change);
    }
}

// What is to be reported for a change told with `change`; the description is used up.
VobModification Vob::takeDescription(const EditModifications& editChanges,
                                     const VobModification& change) {
    VobModification report(0);
    if (described_.load(std::memory_order_acquire)) {
        const CriticalSection::Lock lock(pendingLock_);
        std::swap(report, description_);
        described_ = false;
    }
    if (change.valid() && !editChanges.keepsChangeDescription())
        report = change;
    return report;
}
