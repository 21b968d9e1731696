// `VobPlayable`: what the transport sees of a Vob.
//
// Internal to this folder. Owned by its Vob.
#pragma once

#include "platform/host/PlayServer.h"

class Vob;

namespace cutroom {

class VobPlayable final : public iPlayable {
public:
    explicit VobPlayable(Vob& vob) : vob_(vob) {}
    ~VobPlayable() override;

    // Joins or leaves what the transport moves; the destructor leaves.
    void setRegistered(bool on);

    double playTime() const override;
    void setTimeFromPlayback(double time) override;
    TimeRange playExtents() const override;
    Kv::FrameRate playRate() const override;
    bool isPlaying() const override;
    void setPlaying(bool playing) override;
    void informPlayStateChange(PlayStateNotifyType change) override;
    AVMachine* getDevice() const override;

private:
    Vob& vob_;
    bool registered_ = false;
};

} // namespace cutroom
