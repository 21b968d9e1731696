#include "platform/embedded/Transport.h"

#include "platform/base/Time.h"
#include "platform/embedded/CallLogged.h"
#include "platform/host/Clock.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>

namespace cutroom {

namespace {

// A frame counts as reached this far (in frames) before its time, so that the rounding of elapsed
// seconds never holds one back by a tick.
constexpr double kFrameTolerance = 1e-6;

bool canPlay(double time) { return isStorableTime(time); }

// Tells whether nothing of the extents lies ahead of `time`.
bool arrived(double time, double speed, const TimeRange& extents) {
    return speed > 0.0 ? time >= extents.getEnd() : time <= extents.getStart();
}

double clampAhead(double time, double speed, const TimeRange& extents) {
    return speed > 0.0 ? std::min(time, extents.getEnd()) : std::max(time, extents.getStart());
}

} // namespace

Transport::Transport(iEventLoop& loop, const iClock& clock) : loop_(loop), clock_(clock) {}

Transport::~Transport() = default;

Transport::Reel* Transport::find(const iPlayable* playable) noexcept {
    const auto reel = std::find_if(reels_.begin(), reels_.end(), [&](const Reel& candidate) {
        return candidate.playable == playable;
    });
    return reel == reels_.end() ? nullptr : &*reel;
}

// Walks a snapshot: what is called may register and deregister.
template <class Call> bool Transport::forEach(const Call& call) {
    const std::uint64_t run = run_;
    const std::vector<Reel> atStart = reels_;
    for (const Reel& reel : atStart) {
        if (isRegistered(reel.playable))
            callLogged("Transport", [&] { call(*reel.playable); });
        if (run_ != run)
            return false;
    }
    return true;
}

bool Transport::play(double speed) {
    assert(loop_.isUiThread());
    if (reels_.empty() || !(std::fabs(speed) <= kMaxSpeed) || speed == 0.0)
        return false;
    if (stopping_)
        pendingSpeed_ = speed;
    else if (status_ == kTransitIdle)
        start(speed);
    else
        changeSpeed(speed);
    return true;
}

void Transport::start(double speed) {
    ++run_;
    status_ = kTransitInProgress;
    speed_ = speed;
    timer_ = loop_.addTimer(preroll_, 0.0, [this] { begin(); });
    if (forEach([this](iPlayable& playable) { join(playable); }))
        notices_.issueNotification(NotifyMsg(), TransitStatus::playStartedMsgType());
}

void Transport::join(iPlayable& playable) {
    playable.setPlaying(true);
    playable.informPlayStateChange(kPlayStateStarted);
}

// The machines are up to speed: from now on time counts.
void Transport::begin() {
    status_ = kTransitSteady;
    const double now = clock_.now();
    for (Reel& reel : reels_)
        anchor(reel, now);
    const double length = tickLength();
    timer_ = loop_.addTimer(length, length, [this] { tick(); });
    if (forEach([this](iPlayable& playable) { drive(playable); }))
        tick();
}

void Transport::drive(iPlayable& playable) {
    AVMachine* const device = playable.getDevice();
    if (device && status_ == kTransitSteady)
        device->play(playable.playTime(), speed_);
}

void Transport::changeSpeed(double speed) {
    if (speed == speed_)
        return;
    const double now = clock_.now();
    for (Reel& reel : reels_) {
        // What has passed of the next frame counts on, or a wheel that is turned more often than
        // frames go by would hold the picture still.
        const double passed = reel.carried + std::fabs((now - reel.anchorClock) * speed_);
        const double shown = std::fabs(reel.playable->playTime() - reel.anchorTime);
        anchor(reel, now);
        if (status_ == kTransitSteady && speed * speed_ > 0.0)
            reel.carried = std::max(passed - shown, 0.0);
    }
    speed_ = speed;
    forEach([this](iPlayable& playable) {
        drive(playable);
        playable.informPlayStateChange(kPlayStateSpeedChanged);
    });
}

void Transport::anchor(Reel& reel, double now) noexcept {
    reel.anchorTime = reel.lastTime = reel.playable->playTime();
    reel.anchorClock = now;
    reel.carried = 0.0;
}

double Transport::tickLength() const {
    const double frame = reels_.empty() ? 0.0 : reels_.front().playable->playRate().frameDuration();
    return frame > 0.0 ? frame : kDefaultTick;
}

// Elapsed frames, not elapsed seconds, so that an edit plays on its own grid and every frame is
// reached however late a tick comes.
double Transport::timeOf(const Reel& reel, double now) const {
    const double moved = (now - reel.anchorClock) * speed_ + std::copysign(reel.carried, speed_);
    const Kv::FrameRate rate = reel.playable->playRate();
    if (!rate.valid())
        return reel.anchorTime + moved;
    const double frames = std::floor(std::fabs(moved) * rate.asDouble() + kFrameTolerance);
    const double whole = toSeconds(rate.frameToFlicks(static_cast<std::int64_t>(frames)));
    return reel.anchorTime + std::copysign(whole, moved);
}

// Moves one playable to where it belongs; tells whether it has arrived.
bool Transport::advance(iPlayable& playable, double now) {
    const double time = playable.playTime();
    if (!canPlay(time))
        return true;
    const TimeRange extents = playable.playExtents();
    if (arrived(time, speed_, extents))
        return true;
    Reel& reel = *find(&playable);
    const double target = clampAhead(timeOf(reel, now), speed_, extents);
    const bool movedByOther = time != std::exchange(reel.lastTime, time);
    if (std::fabs(target - time) <= kTimeTolerance)
        return false;
    if (movedByOther) { // play on from there
        anchor(reel, now);
        drive(playable);
        return false;
    }
    const double speed = speed_;
    playable.setTimeFromPlayback(target);
    if (Reel* const moved = find(&playable)) // it may be gone by now
        moved->lastTime = moved->playable->playTime();
    return arrived(target, speed, extents);
}

void Transport::tick() {
    const double now = clock_.now();
    const iPlayable* const master = reels_.empty() ? nullptr : reels_.front().playable;
    bool masterArrived = false;
    const bool goesOn = forEach([&](iPlayable& playable) {
        const bool there = advance(playable, now);
        if (&playable == master)
            masterArrived = there;
    });
    if (goesOn && masterArrived)
        stop();
}

void Transport::stop() {
    assert(loop_.isUiThread());
    if (status_ == kTransitIdle || stopping_)
        return;
    ++run_;
    timer_.reset();
    stopping_ = true;
    status_ = kTransitInProgress;
    forEach([this](iPlayable& playable) { leave(playable); });
    speed_ = 0.0;
    status_ = kTransitIdle;
    stopping_ = false;
    const double next = std::exchange(pendingSpeed_, 0.0);
    const std::uint64_t run = run_;
    notices_.issueNotification(NotifyMsg(), TransitStatus::playStoppedMsgType());
    if (next != 0.0 && run_ == run)
        play(next);
}

void Transport::leave(iPlayable& playable) {
    if (!playable.isPlaying())
        return;
    playable.setPlaying(false);
    if (AVMachine* const device = playable.getDevice())
        device->stop(playable.playTime());
    playable.informPlayStateChange(kPlayStateStopped);
}

void Transport::prepareToLocate() {
    if (status_ != kTransitIdle && speed_ != 1.0)
        stop();
}

void Transport::registerPlayable(iPlayable* playable) {
    if (!playable || isRegistered(playable))
        return;
    reels_.push_back({playable});
    if (status_ == kTransitIdle || stopping_)
        return;
    anchor(reels_.back(), clock_.now());
    drive(*playable);
    join(*playable);
}

void Transport::deregisterPlayable(iPlayable* playable) {
    const Reel* const reel = find(playable);
    if (!reel)
        return;
    reels_.erase(reels_.begin() + (reel - reels_.data()));
    if (status_ == kTransitIdle)
        return;
    leave(*playable);
    if (reels_.empty())
        stop();
}

bool Transport::isRegistered(const iPlayable* playable) const {
    return std::any_of(reels_.begin(), reels_.end(),
                       [&](const Reel& reel) { return reel.playable == playable; });
}

} // namespace cutroom
