// What an `Edit` holds, for the sources of the store that make up its operations.
#pragma once

#include "platform/base/Annotations.h"
#include "platform/store/Edit.h"
#include "platform/store/EditHistory.h"
#include "platform/store/EditState.h"

#include <atomic>

struct Edit::Impl {
    explicit Impl(const Cookie& id) : cookie(id) {}

    const Cookie cookie;
    mutable CriticalSection lock{LockRank::edit};
    std::atomic<std::uint64_t> changes{0};
    std::atomic<bool> dirty{false};

    // All below: guarded by lock.
    cutroom::EditState state;
    cutroom::EditHistory history;
    EditModifications pending;
    int modifiers = 0;    // that live
    int lockDepth = 0;    // scoped locks inside one another
    bool tellDue = false; // tell what is pending when the outermost lock is left
    double toldStart = 0; // the extents as told last
    double toldEnd = 0;

    // Notes a change: the edit is dirty, the change waits to be told.
    void record(const EditModification& change);
    void record(EditModificationType kind) { record(EditModification(kind)); }
    // Dirty without anything to tell.
    void touch();
    // Takes what is to be told, with the changes of the extents added.
    EditModifications takePending();
    // Puts the kinds (no details) back among what is to be told. Needs no memory.
    void keepKinds(const EditModifications& untold) noexcept;
    // Gives a field a value: recorded when that changes it.
    template <class T> bool set(T& field, const T& value, EditModificationType kind) {
        if (field == value)
            return false;
        field = value;
        record(kind);
        return true;
    }
    // The same for a field of a shared record.
    template <class T, class Field>
    bool set(cutroom::Shared<T>& record_, Field T::*field, const Field& value,
             EditModificationType kind) {
        if ((*record_).*field == value)
            return false;
        record_.write().*field = value;
        record(kind);
        return true;
    }
    void recordChannel(EditModificationType kind, const IdStamp& channel);
    // Makes the lists of the channels belong to `edit`, or to nobody.
    void attach(Edit* edit);
    // Replaces the state, keeping the lists of the channels that stay as objects, the view state
    // and the times. Neither recorded nor told.
    void replaceState(Edit& edit, cutroom::EditState&& fresh);
};

namespace cutroom {

// The insides of an edit, for the store's own operations on whole edits. Under `Edit::Lock`.
struct EditAccess {
    static Edit::Impl& impl(const Edit& edit) noexcept { return *edit.impl_; }
};

} // namespace cutroom
