// The state of the transport, as the model asks for it.
#pragma once

#include "platform/messaging/Notifier.h"

// What the transport does.
enum eTransitStatus : int {
    kTransitIdle = 0,
    // Playing or shuttling steadily: speed and machine are settled.
    kTransitSteady = 1,
    // On the way from one state to another: starting up or stopping. Roles are not assigned then.
    kTransitInProgress = 2,
};

namespace cutroom {

// User-interface thread only.
class CUTROOM_API iTransitStatusManager {
public:
    virtual ~iTransitStatusManager();
    virtual eTransitStatus getStatus() const = 0;
    // Edit seconds per second: 1 is real time, negative is backwards, 0 while idle.
    virtual double getCurrentSpeed() const = 0;
    // The user is about to jump to another time: shuttling (any speed but 1) stops first. Plain
    // playing goes on, from the new time.
    virtual void prepareToLocate() = 0;
    // Tells "playStarted" when the transport begins to move and "playStopped" when it has come to
    // rest, for whatever reason, with the status idle again. On the user-interface thread; a
    // listener may start the transport anew.
    virtual const Notifier& notices() const noexcept = 0;
};

} // namespace cutroom

class CUTROOM_API TransitStatus {
public:
    // The installed manager; without one the transport is idle for ever.
    static cutroom::iTransitStatusManager& manager() noexcept;
    // The types of its notices.
    static int playStartedMsgType();
    static int playStoppedMsgType();
};
