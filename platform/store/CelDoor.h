// The door through which every change of a cut event list passes. Internal to the store.
#pragma once

#include "platform/store/Cel.h"
#include "platform/store/Edit.h"

#include <optional>

// Holds the lock of the list's edit (a list of its own has none) while the list changes; notes what
// changed when told that it did.
class Cel::Door {
public:
    explicit Door(Cel& cel) : cel_(cel) {
        if (cel.edit_)
            lock_.emplace(*cel.edit_);
    }
    // The change is made: the edit is dirty from now on.
    void changed(EditModificationType kind) { cel_.recordChange(kind); }
    // The same for a change that numbers the events anew.
    void renumbered(EditModificationType kind) {
        cel_.renumber();
        changed(kind);
    }

private:
    Cel& cel_;
    std::optional<Edit::Lock> lock_;
};
