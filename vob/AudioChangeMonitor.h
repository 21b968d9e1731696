// `AudioChangeMonitor`: the base of an audio component. Follows the play machine through a
// `VobMonitor` of its own and calls a few handlers that the component overrides.
//
// User-interface thread only, the mixer bypass included. Lives between `Host::install` and
// `Host::uninstall`. The handlers are called while values are published or roles change; they may
// change the Vob, give roles away, and destroy the monitor.
#pragma once

#include "platform/base/Guard.h"
#include "platform/messaging/NotifyMsg.h"
#include "platform/messaging/ValClient.h"
#include "platform/messaging/ValObserver.h"
#include "platform/store/EditPtr.h"
#include "vob/VobMonitor.h"

#include <memory>
#include <vector>

// Does not keep the play machine open. Leaving it for another play machine leaves it open;
// re-attaching on a mixer bypass detaches as any client does, which closes a Vob that no unmanaged
// client shows.
class CUTROOM_API AudioChangeMonitor : public ValObserverClient {
public:
    // Follows nothing before the role of the play machine next moves. A component that is to follow
    // the present play machine calls `processFocusChange` at the end of its own constructor: only
    // then do its handlers run.
    AudioChangeMonitor();
    AudioChangeMonitor(const AudioChangeMonitor&) = delete;
    AudioChangeMonitor& operator=(const AudioChangeMonitor&) = delete;
    ~AudioChangeMonitor() override;

protected:
    // The one entry of all changes of observed values:
    //
    //   edit changes      handleEditMods, with the time last published
    //   time              handleTimeChanges, unless the Vob's time changes are transient
    //   view cookie       handleEditChange of the edit it names, with the time last published
    //   Vob modification  handleVobModification
    //   mixer bypass      handleAudioMixerChanges; then, unless the transport plays steadily, the
    //                     monitor is detached and attached to the play machine anew
    void notifyValChanged(const ValObserverBase& observer) override;

public:
    // What an audio component overrides; nothing here. Times are seconds; kNoTime for none.
    //
    // Another edit is to be heard: `attached` when the monitor was attached to a Vob (then after a
    // `handleTimeChanges` of the same time), else because the Vob followed shows another edit.
    // Empty, with no time, when there is no play machine any more.
    virtual void handleEditChange(EditPtr edit, double time, bool attached);
    // The edit changed.
    virtual void handleEditMods(const EditModifications& changes, double time);
    virtual void handleTimeChanges(double time);
    // The speed of the transport, and so the relation of the media's samples to time, changed while
    // it plays.
    virtual void handleAudioGearingChanges();
    // The mixer bypass was switched.
    virtual void handleAudioMixerChanges();
    // Anything else changed in how the edit is viewed (VobModificationType bits).
    virtual void handleVobModification(unsigned type);

    // The Vob followed; null when there is none.
    Vob* getVob() const noexcept;
    // The time last published; kNoTime before and without a play machine.
    double getCurrentTime() const noexcept;
    // The monitor followed, whose mixer bypass may be switched; null before there was a play
    // machine.
    VobMonitor* getMonitor() const noexcept;

protected:
    // Follows the play machine: when it is another Vob than the one followed, moves the monitor
    // there and calls `handleEditChange`. Without a play machine the monitor is detached.
    void processFocusChange();

private:
    class Follower;

    void handleFocusChange(const NotifyMsg& message);
    void handlePlayStop(const NotifyMsg& message);
    void handleProjectStateChange(const NotifyMsg& message);
    void processViewCookieChange();
    void processMixerBypassChange();
    void follow(const Kv::Ptr<Vob>& vob);
    void followNothing();
    void dropValues();
    bool isTransient() const noexcept;
    Follower& monitor();

    std::unique_ptr<Follower> monitor_; // the manager may delete it
    ValClient<double> time_{this};
    ValClient<Cookie> viewCookie_{this};
    ValClient<EditModifications> editChanges_{this};
    ValClient<unsigned> vobChange_{this};
    ValClient<bool> monitorBypass_{this};
    ValClient<bool> mixerBypass_{this};
    bool toldOfEdit_ = false;     // and not yet that it has gone
    std::shared_ptr<bool> alive_; // expires with this
    std::vector<Kv::Ptr<Guard>> registrations_;
};
