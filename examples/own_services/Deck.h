// A transport that moves by hand: a wheel that is turned frame by frame.
#pragma once

#include "platform/host/PlayServer.h"
#include "platform/host/TransitStatus.h"

#include <algorithm>
#include <vector>

// The viewed edit that takes the play role registers itself; the deck moves whatever is registered.
class Deck : public cutroom::iTransitStatusManager, public cutroom::iPlayServer {
public:
    // Turns the wheel: each turn is a frame.
    void turn(int frames) {
        status_ = kTransitSteady;
        for (cutroom::iPlayable* playable : playables_) {
            playable->setPlaying(true);
            playable->informPlayStateChange(kPlayStateStarted);
        }
        notices_.issueNotification(NotifyMsg(), TransitStatus::playStartedMsgType());
        for (int i = 0; i < frames; ++i)
            for (cutroom::iPlayable* playable : playables_)
                step(*playable);
        status_ = kTransitIdle;
        for (cutroom::iPlayable* playable : playables_) {
            playable->setPlaying(false);
            playable->informPlayStateChange(kPlayStateStopped);
        }
        notices_.issueNotification(NotifyMsg(), TransitStatus::playStoppedMsgType());
    }

    eTransitStatus getStatus() const override { return status_; }
    double getCurrentSpeed() const override { return status_ == kTransitSteady ? 1 : 0; }
    void prepareToLocate() override {} // a wheel does not shuttle
    const Notifier& notices() const noexcept override { return notices_; }

    void registerPlayable(cutroom::iPlayable* playable) override {
        if (!isRegistered(playable))
            playables_.push_back(playable);
    }
    void deregisterPlayable(cutroom::iPlayable* playable) override {
        std::erase(playables_, playable);
    }
    bool isRegistered(const cutroom::iPlayable* playable) const override {
        return std::find(playables_.begin(), playables_.end(), playable) != playables_.end();
    }

private:
    static void step(cutroom::iPlayable& playable) {
        const double next = playable.playTime() + playable.playRate().frameDuration();
        playable.setTimeFromPlayback(std::min(next, playable.playExtents().getEnd()));
    }

    Notifier notices_;
    std::vector<cutroom::iPlayable*> playables_;
    eTransitStatus status_ = kTransitIdle;
};
