// The transport that we ship: it plays by the loop's clock.
#pragma once

#include "platform/base/Guard.h"
#include "platform/host/EventLoop.h"
#include "platform/host/PlayServer.h"
#include "platform/host/TransitStatus.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cutroom {

class iClock;

// Moves the current time of every registered playable: elapsed time by the clock, times the speed,
// in whole frames of the playable counted from where it began, held at the end of its extents that
// lies ahead. The first playable is the master: when it has arrived, or has nothing to play, the
// transport stops. Someone else moving a playable meanwhile makes it play on from there.
//
//   play()          first tick           stop(), end reached
//   0 ------> 2 --------------> 1 -----------> 2 ------> 0      eTransitStatus
//     setPlaying(true)                           setPlaying(false)
//     "started", playStarted                     "stopped", then at 0 playStopped
//
// User-interface thread only. Everything it calls may call it again; a change that is made inside a
// notice takes effect at once, and those notices of the same round that no longer hold then are
// left out.
class CUTROOM_API Transport final : public iTransitStatusManager, public iPlayServer {
public:
    // Speeds beyond are refused.
    static constexpr double kMaxSpeed = 1000.0;
    // Seconds between ticks where the master names no rate.
    static constexpr double kDefaultTick = 0.04;

    // `loop` and `clock` outlive the transport.
    Transport(iEventLoop& loop, const iClock& clock);
    // Ends without telling anyone.
    ~Transport() override;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    // Starts, or changes the speed of what plays (told as such, without leaving status 1). False,
    // and nothing changed, when no playable is registered or the speed is 0, not finite or beyond
    // the limit. Asked for while stopping, it starts when at rest.
    bool play(double speed = 1.0);
    // Comes to rest where the playables stand. Idle: nothing.
    void stop();
    // Seconds between `play` and the first tick (0 at first): the time that machines take to get
    // going. The status is 2 for as long.
    void setPreroll(double seconds) noexcept { preroll_ = seconds; }

    eTransitStatus getStatus() const override { return status_; }
    double getCurrentSpeed() const override { return speed_; }
    void prepareToLocate() override;
    const Notifier& notices() const noexcept override { return notices_; }

    void registerPlayable(iPlayable* playable) override;
    // When the last one goes, the transport stops.
    void deregisterPlayable(iPlayable* playable) override;
    bool isRegistered(const iPlayable* playable) const override;

private:
    // A playable and from where it plays.
    struct Reel {
        iPlayable* playable = nullptr;
        double anchorTime = 0.0; // its time when the clock stood at anchorClock
        double anchorClock = 0.0;
        double carried = 0.0;  // edit seconds that had passed by then and were not shown
        double lastTime = 0.0; // its time as the transport left it
    };

    Reel* find(const iPlayable* playable) noexcept;
    // Calls `call` with each playable, in order, while the run goes on. False when it ended.
    template <class Call> bool forEach(const Call& call);
    void start(double speed);
    void begin();
    void changeSpeed(double speed);
    void tick();
    void anchor(Reel& reel, double now) noexcept;
    bool advance(iPlayable& playable, double now);
    double timeOf(const Reel& reel, double now) const;
    double tickLength() const;
    void drive(iPlayable& playable);
    void join(iPlayable& playable);
    void leave(iPlayable& playable);

    iEventLoop& loop_;
    const iClock& clock_;
    Notifier notices_;
    std::vector<Reel> reels_;
    eTransitStatus status_ = kTransitIdle;
    double speed_ = 0.0;
    double preroll_ = 0.0;
    double pendingSpeed_ = 0.0; // asked for while stopping; 0: none
    bool stopping_ = false;
    std::uint64_t run_ = 0; // counts starts and stops
    Kv::Ptr<Guard> timer_;
};

} // namespace cutroom
