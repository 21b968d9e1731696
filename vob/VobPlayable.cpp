#include "vob/VobPlayable.h"

#include "platform/host/Host.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"

namespace cutroom {

VobPlayable::~VobPlayable() { setRegistered(false); }

void VobPlayable::setRegistered(bool on) {
    if (on == registered_)
        return;
    registered_ = on;
    if (on)
        Host::playServer().registerPlayable(this);
    else
        Host::playServer().deregisterPlayable(this);
}

double VobPlayable::playTime() const { return vob_.getCurrentTime(); }

void VobPlayable::setTimeFromPlayback(double time) { vob_.setCurrentTime(time); }

TimeRange VobPlayable::playExtents() const { return vob_.getEditExtents(); }

Kv::FrameRate VobPlayable::playRate() const {
    const EditPtr edit = vob_.getEdit();
    return edit ? edit->getFrameRate() : Kv::FrameRate();
}

bool VobPlayable::isPlaying() const { return vob_.isPlaying(); }

void VobPlayable::setPlaying(bool playing) { vob_.setPlaying(playing); }

void VobPlayable::informPlayStateChange(PlayStateNotifyType change) {
    vob_.informPlayStateChange(change);
}

AVMachine* VobPlayable::getDevice() const { return vob_.getDevice(); }

} // namespace cutroom
