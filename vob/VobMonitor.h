// `VobMonitor`: publishes what happens to a viewed edit as values, for parts of the program that
// follow values rather than attach clients, the audio engine above all.
//
// A client of its Vob, owned by its maker, on the user-interface thread. It is managed, so it does
// not keep its Vob open, and it is deleted where the managed clients of a Vob are destroyed: a
// maker that keeps it as a value detaches it before.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/store/EditModifications.h"
#include "vob/VobClient.h"
#include "vob/notify/ValServer.h"

// Listeners of the values are called while the clients of the Vob are told; they may do what a
// client may, also detach, move or destroy the monitor: the rest of that change is then not
// published any more.
class CUTROOM_API VobMonitor : public VobClient {
public:
    // Attached to `vob`, with its time and view cookie; unattached, with no time, when it is null.
    explicit VobMonitor(Vob* vob);
    // Attached beside `other`, with its values; listeners stay with `other`.
    VobMonitor(const VobMonitor& other);
    // The same in the place of `other`, which is unattached then.
    VobMonitor(VobMonitor&& other); // NOLINT(performance-noexcept-move-constructor)
    VobMonitor& operator=(const VobMonitor&) = delete;
    ~VobMonitor() override;

    // Attaches to `vob`, then publishes its current time. Nothing for null and while attached to
    // another Vob.
    void attachTo(Vob* vob);

    // The current time in seconds: told of each change that is not transient. Taken over without
    // telling when the play machine shows another edit.
    ValServer<double>& getTimeServer() noexcept { return time_; }
    // What the master view shows: told when the view edits change, and when the play machine shows
    // another edit.
    ValServer<Cookie>& getViewCookieServer() noexcept { return viewCookie_; }
    // The last changes of the edit.
    ValServer<EditModifications>& getEditModificationServer() noexcept { return editChanges_; }
    // The kinds (VobModificationType bits) of the last change that is neither told as a time nor as
    // a view cookie. Another edit shown elsewhere than on the play machine is told in no way.
    ValServer<unsigned>& getVobModificationServer() noexcept { return vobChange_; }
    // Whether the mixer is to be bypassed for followers of this monitor; set from outside.
    ValServer<bool>& getMixerBypassServer() noexcept { return mixerBypass_; }

    void handleModifications(const EditModifications& editChanges,
                             const VobModification& change) override;
    // "VobMonitor".
    const char* idstring() const override;

protected:
    // Takes over the time and the view cookie of a Vob without telling them.
    void setVob(Vob* vob) override;

private:
    void takeValues(const Vob& vob);

    ValServer<double> time_{kNoTime};
    ValServer<Cookie> viewCookie_;
    ValServer<EditModifications> editChanges_;
    ValServer<unsigned> vobChange_;
    ValServer<bool> mixerBypass_;
};
