// The play server: what the transport moves, and the devices that follow it.
#pragma once

#include "platform/base/FrameRate.h"
#include "platform/base/NumRange.h"
#include "platform/host/PlayState.h"

// A machine on which an edit is played or shown: a deck, a monitor output, an audio engine. The
// edit's viewer names it; the transport drives it. User-interface thread only.
class CUTROOM_API AVMachine {
public:
    virtual ~AVMachine();
    // Goes to `time` (seconds in the edit) and holds there.
    virtual void locate(double time) = 0;
    // Moves on from `time` at `speed` (1 is real time, negative is backwards).
    virtual void play(double time, double speed) = 0;
    // Holds at `time`.
    virtual void stop(double time) = 0;
};

namespace cutroom {

// An edit that can be played. All operations are called on the user-interface thread, without a
// lock held.
class CUTROOM_API iPlayable {
public:
    virtual ~iPlayable();
    // The current time in seconds; 1e99 when there is nothing to play.
    virtual double playTime() const = 0;
    // Moves the current time on behalf of the transport.
    virtual void setTimeFromPlayback(double time) = 0;
    // The times between which playing may move.
    virtual TimeRange playExtents() const = 0;
    // The rate at which the time advances in whole frames; no rate: at every tick.
    virtual Kv::FrameRate playRate() const = 0;
    // Raised while the transport moves this playable.
    virtual bool isPlaying() const = 0;
    virtual void setPlaying(bool playing) = 0;
    // Takes a notice for its clients. "Started" comes after `setPlaying(true)`, "stopped" after
    // `setPlaying(false)`.
    virtual void informPlayStateChange(PlayStateNotifyType change) = 0;
    // The machine that plays it, or null. The playable keeps it alive.
    virtual AVMachine* getDevice() const = 0;
};

// The list of playables that the transport moves, in order of registration. The first is the
// master: it decides when playing ends. User-interface thread only.
class CUTROOM_API iPlayServer {
public:
    virtual ~iPlayServer();
    // Adds `playable`; registering it again changes nothing. It must be deregistered before it
    // goes. While the transport plays, it joins in.
    virtual void registerPlayable(iPlayable* playable) = 0;
    // Takes it out; one that is playing stops and is told so. Unknown ones are ignored.
    virtual void deregisterPlayable(iPlayable* playable) = 0;
    virtual bool isRegistered(const iPlayable* playable) const = 0;
};

} // namespace cutroom
