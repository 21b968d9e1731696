// The current time of a Vob.
#include "vob/Vob.h"

#include <cmath>

namespace {

// Holds a flag up for its own lifetime.
class Raised {
public:
    explicit Raised(bool& flag) : flag_(flag) { flag_ = true; }
    ~Raised() { flag_ = false; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

private:
    bool& flag_;
};

} // namespace

double Vob::getCurrentTime(EditModule::eAccuracy accuracy) const {
    if (accuracy == EditModule::kAccuracyExact)
        return timeMirror_.load(std::memory_order_relaxed);
    return edit_ ? module_.getCurrentTime(accuracy) : kNoTime;
}

void Vob::setCurrentTime(double seconds) {
    if (!edit_ || settingTime_ || !std::isfinite(seconds))
        return;
    const Kv::Ptr<Vob> self = keepAlive();
    const Raised guard(settingTime_);
    storeTime(seconds);
    addModification(kVobTime);
}

void Vob::storeCurrentTime(double seconds) {
    if (edit_)
        storeTime(seconds);
}

void Vob::storeTime(double seconds) {
    if (!std::isfinite(seconds))
        return;
    module_.setCurrentTime(seconds);
    timeMirror_.store(seconds, std::memory_order_relaxed);
}

void Vob::setPreviewing(bool on, bool rememberTime) {
    originalTime_ = kNoTime;
    if (!on) {
        timeChangeFlags_ &= ~unsigned{kTimePreviewing};
        return;
    }
    timeChangeFlags_ |= kTimePreviewing;
    if (rememberTime)
        originalTime_ = getCurrentTime();
}

void Vob::setTransientTimeChange(bool on) noexcept {
    if (on)
        timeChangeFlags_ |= kTimeTransient;
    else
        timeChangeFlags_ &= ~unsigned{kTimeTransient};
}

double Vob::getMonitorTime() const {
    double time = kNoTime;
    if (monitorPoint_ == kMonitorMarkIn)
        time = module_.getMark(Kv::MarkTypes::In);
    else if (monitorPoint_ == kMonitorMarkOut)
        time = module_.getMark(Kv::MarkTypes::Out);
    return time != kNoTime ? time : getCurrentTime();
}
