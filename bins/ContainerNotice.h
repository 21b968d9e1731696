// `ContainerNotice`: what the managers of containers (bins, documents, asset groups) tell their
// listeners.
//
// Travels as the object of a message of the type "ContainerManagerBaseChange":
//
//     if (const auto* notice = message.getObjectAs<ContainerNotice>())
//         if (notice->what() == ContainerNotice::What::changed) ...
#pragma once

#include "bins/ContainerBase.h"

#include <utility>

// Immutable once made; any thread.
class CUTROOM_API ContainerNotice final : public iObject {
public:
    enum class What {
        changed,      // one container changed; new ones too: see `created`
        destroyed,    // containers are no longer managed
        saved,        // the manager has written what was dirty; names no container
        reset,        // the manager has set itself up anew; names no container
        logsDeleted,  // the edit store has deleted the assets named
        logsModified, // assets named have changed in the edit store
    };

    // A change of one container; the reason is that of the records when none is given.
    ContainerNotice(const Cookie& container, const ContainerBase::Modifications& changes,
                    LightweightString<char> reason = {});
    // Anything else, concerning `subjects`: containers, or assets for the last two kinds.
    ContainerNotice(What what, CookieVec subjects, LightweightString<char> reason = {});
    ~ContainerNotice() override;

    What what() const noexcept { return what_; }
    // The container that changed, or the first of those concerned; the invalid cookie for none.
    Cookie container() const noexcept { return subjects_.empty() ? Cookie() : subjects_.front(); }
    // All that are concerned, in the order in which the change was made.
    const CookieVec& subjects() const noexcept { return subjects_; }
    bool concerns(const Cookie& cookie) const noexcept;
    // The records of a change; empty for the other kinds.
    const ContainerBase::Modifications& changes() const noexcept { return changes_; }
    // A change by which a container came to be.
    bool created() const noexcept { return changes_.includes(ContainerBase::kModCreated); }
    bool destroyed() const noexcept { return what_ == What::destroyed; }
    // Why, as given with the change; may be empty.
    const LightweightString<char>& reason() const noexcept { return changes_.getReason(); }

private:
    const What what_;
    const CookieVec subjects_;
    ContainerBase::Modifications changes_;
};
