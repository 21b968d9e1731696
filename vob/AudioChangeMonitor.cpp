#include "vob/AudioChangeMonitor.h"

#include "platform/host/TransitStatus.h"
#include "platform/messaging/UIThreadCallback.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/EditManager.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"

#include <utility>

// The monitor of an audio component. It may be destroyed with the other managed clients of a Vob,
// as at the project's exit; then its owner must not delete it again.
class AudioChangeMonitor::Follower final : public VobMonitor {
public:
    explicit Follower(AudioChangeMonitor& owner) : VobMonitor(nullptr), owner_(owner) {}
    ~Follower() override {
        if (owner_.monitor_.get() == this)
            static_cast<void>(owner_.monitor_.release());
    }

    void notifyPlayStateChange(PlayStateNotifyType change) override {
        if (change == kPlayStateSpeedChanged)
            owner_.handleAudioGearingChanges();
    }

private:
    AudioChangeMonitor& owner_;
};

AudioChangeMonitor::AudioChangeMonitor() : alive_(std::make_shared<bool>(true)) {
    const auto on = [this](void (AudioChangeMonitor::*handler)(const NotifyMsg&)) {
        return makeUIThreadCallback(this, handler);
    };
    const VobManager& manager = VobManager::instance();
    mixerBypass_.registerWith(&EditManager::instance().getMixerBypassServer());
    registrations_ = {
        CurrentProject::addListener(on(&AudioChangeMonitor::handleProjectStateChange)),
        manager.addListener(on(&AudioChangeMonitor::handleFocusChange),
                            manager.focusChangedMsgType()),
        TransitStatus::manager().notices().registerNotification(
            on(&AudioChangeMonitor::handlePlayStop), TransitStatus::playStoppedMsgType()),
    };
}

// Stops listening first, because the end of the monitor may close its Vob, and so move the role.
AudioChangeMonitor::~AudioChangeMonitor() {
    registrations_.clear();
    mixerBypass_.deregister();
    monitor_.reset();
}

void AudioChangeMonitor::handleEditChange(EditPtr, double, bool) {}
void AudioChangeMonitor::handleEditMods(const EditModifications&, double) {}
void AudioChangeMonitor::handleTimeChanges(double) {}
void AudioChangeMonitor::handleAudioGearingChanges() {}
void AudioChangeMonitor::handleAudioMixerChanges() {}
void AudioChangeMonitor::handleVobModification(unsigned) {}

// --- what is followed ----------------------------------------------------------------------------

VobMonitor* AudioChangeMonitor::getMonitor() const noexcept { return monitor_.get(); }

Vob* AudioChangeMonitor::getVob() const noexcept { return monitor_ ? monitor_->getVob() : nullptr; }

double AudioChangeMonitor::getCurrentTime() const noexcept {
    return getVob() ? monitor_->getTimeServer().getValue() : kNoTime;
}

AudioChangeMonitor::Follower& AudioChangeMonitor::monitor() {
    if (!monitor_) {
        monitor_ = std::make_unique<Follower>(*this);
        time_.registerWith(&monitor_->getTimeServer());
        viewCookie_.registerWith(&monitor_->getViewCookieServer());
        editChanges_.registerWith(&monitor_->getEditModificationServer());
        vobChange_.registerWith(&monitor_->getVobModificationServer());
        monitorBypass_.registerWith(&monitor_->getMixerBypassServer());
    }
    return *monitor_;
}

void AudioChangeMonitor::dropValues() {
    viewCookie_.dropValue();
    editChanges_.dropValue();
}

void AudioChangeMonitor::follow(const Kv::Ptr<Vob>& vob) {
    const std::weak_ptr<bool> alive = alive_;
    Follower& follower = monitor();
    VobManager::instance().closeInternal(&follower);
    follower.attachTo(vob.get());
    // A client that was told meanwhile may have moved the role on, or destroyed the component.
    if (alive.expired() || getVob() != vob.get())
        return;
    toldOfEdit_ = true;
    handleEditChange(EditPtr(vob->getMasterViewCookie()), getCurrentTime(), true);
}

void AudioChangeMonitor::followNothing() {
    dropValues();
    if (monitor_)
        VobManager::instance().closeInternal(monitor_.get());
    if (std::exchange(toldOfEdit_, false))
        handleEditChange(EditPtr(), kNoTime, true);
}

// --- notices -------------------------------------------------------------------------------------

void AudioChangeMonitor::processFocusChange() {
    const Kv::Ptr<Vob> play = VobManager::instance().getPlayMachine();
    if (!play)
        followNothing();
    else if (play.get() != getVob())
        follow(play);
}

void AudioChangeMonitor::handleFocusChange(const NotifyMsg&) { processFocusChange(); }

void AudioChangeMonitor::handlePlayStop(const NotifyMsg&) { processFocusChange(); }

void AudioChangeMonitor::handleProjectStateChange(const NotifyMsg& message) {
    if (message.getType() == CurrentProject::aboutToExitMsgType())
        followNothing();
    else if (message.getType() == CurrentProject::enteredMsgType())
        processFocusChange();
}

// --- values --------------------------------------------------------------------------------------

void AudioChangeMonitor::notifyValChanged(const ValObserverBase& observer) {
    if (&observer == &mixerBypass_ || &observer == &monitorBypass_)
        processMixerBypassChange();
    else if (&observer == &viewCookie_)
        processViewCookieChange();
    else if (&observer == &editChanges_)
        handleEditMods(editChanges_.getValue(), getCurrentTime());
    else if (&observer == &vobChange_)
        handleVobModification(vobChange_.getValue());
    else if (&observer == &time_ && !isTransient())
        handleTimeChanges(time_.getValue());
}

bool AudioChangeMonitor::isTransient() const noexcept {
    const Vob* const vob = getVob();
    return vob && (vob->getTimeChangeFlags() & Vob::kTimeTransient) != 0;
}

void AudioChangeMonitor::processViewCookieChange() {
    handleEditChange(EditPtr(viewCookie_.getValue()), getCurrentTime(), false);
}

void AudioChangeMonitor::processMixerBypassChange() {
    const std::weak_ptr<bool> alive = alive_;
    handleAudioMixerChanges();
    if (alive.expired() || TransitStatus::manager().getStatus() == kTransitSteady)
        return;
    dropValues();
    VobManager::instance().close(monitor_.get(), false);
    if (!alive.expired())
        processFocusChange();
}
