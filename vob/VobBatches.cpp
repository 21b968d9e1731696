// Batches of changes of a Vob, and how their union comes to be told.
#include "platform/messaging/UiThread.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"

#include <utility>

namespace {

bool namesKindsOnly(const VobModification& change) {
    return change.valid() && !change.hasModifiedTracks() && change.getMarkTime() == kNoTime;
}

} // namespace

void Vob::beginModifications() noexcept { batchDepth_.fetch_add(1); }

void Vob::endModifications() {
    if (batchDepth_.fetch_sub(1) == 1)
        tellPending();
}

void Vob::addModification(const VobModification& change) {
    if (namesKindsOnly(change)) {
        if (batchDepth_.load() != 0) {
            // Looked at first: within a batch most kinds wait already, and reading is cheap.
            if ((pendingKinds_.load() & change.getType()) != change.getType())
                pendingKinds_.fetch_or(change.getType());
            // The batch may have ended meanwhile, without telling these kinds.
            if (batchDepth_.load() == 0)
                tellPending();
            return;
        }
        if (isNothingPending()) {
            tellReady(VobModification(change.getType()));
            return;
        }
    }
    VobModification ready(0);
    {
        const CriticalSection::Lock lock(pendingLock_);
        pending_.merge(change);
        if (batchDepth_.load() != 0) {
            if (pending_.valid() && !anyPending_.load(std::memory_order_relaxed))
                anyPending_.store(true);
            return;
        }
        ready = takePending();
    }
    tellReady(ready.valid() ? std::move(ready) : change);
}

void Vob::clearModifications() {
    const CriticalSection::Lock lock(pendingLock_);
    takePending();
}

VobModification Vob::takePending() {
    VobModification taken = std::exchange(pending_, VobModification(0));
    if (anyPending_.load(std::memory_order_relaxed))
        anyPending_.store(false);
    if (pendingKinds_.load() != 0)
        taken.addModification(pendingKinds_.exchange(0));
    return taken;
}

// Tells what is pending. Does nothing while a batch is open, or when another thread has told it
// already.
void Vob::tellPending() {
    VobModification ready(0);
    {
        const CriticalSection::Lock lock(pendingLock_);
        if (batchDepth_.load() != 0)
            return;
        ready = takePending();
    }
    if (ready.valid())
        tellReady(std::move(ready));
}

// Tells the change with the present time.
void Vob::tellReady(VobModification change) {
    change.setTime(getCurrentTime());
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
    tellNow(change);
    if (mixFollows)
        updateAudioMix();
}

// Marks a change of time during playback for as long as it is told. A telling inside this one finds
// the flag set, and leaves it to the outer one to clear.
void Vob::tellNow(const VobModification& change) {
    static const EditModifications kNoEditChanges;
    const bool byPlayback =
        change.includes(kVobTime) && isPlaying() && (getTimeChangeFlags() & kTimeByPlayback) == 0;
    if (byPlayback)
        setTimeChangeFlags(getTimeChangeFlags() | kTimeByPlayback);
    report(kNoEditChanges, change);
    if (byPlayback)
        setTimeChangeFlags(getTimeChangeFlags() & ~unsigned{kTimeByPlayback});
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
