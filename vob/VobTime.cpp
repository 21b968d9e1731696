// The current time of a Vob.
#include "platform/messaging/UiThread.h"
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
    if (!canMoveTo(seconds))
        return;
    const Kv::Ptr<Vob> self = keepAlive();
    moveTime(seconds);
}

void Vob::setCurrentTime(double seconds, unsigned flags) {
    if (!canMoveTo(seconds))
        return;
    const Kv::Ptr<Vob> self = keepAlive();
    const unsigned before = getTimeChangeFlags();
    setTimeChangeFlags(flags);
    moveTime(seconds);
    setTimeChangeFlags(before);
}

bool Vob::canMoveTo(double seconds) const noexcept {
    return edit_ && !settingTime_ && std::isfinite(seconds);
}

// The caller keeps the Vob alive.
void Vob::moveTime(double seconds) {
    const Raised guard(settingTime_);
    storeTime(seconds);
    if (!isNothingPending() || !cutroom::isUiThread()) {
        addModification(kVobTime);
        return;
    }
    VobModification change(kVobTime);
    change.setTime(seconds);
    tellNow(change);
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
        setTimeChangeFlags(getTimeChangeFlags() & ~unsigned{kTimePreviewing});
        return;
    }
    setTimeChangeFlags(getTimeChangeFlags() | kTimePreviewing);
    if (rememberTime)
        originalTime_ = getCurrentTime();
}

void Vob::setTransientTimeChange(bool on) noexcept {
    const unsigned others = getTimeChangeFlags() & ~unsigned{kTimeTransient};
    setTimeChangeFlags(others | (on ? kTimeTransient : 0u));
}

double Vob::getMonitorTime() const {
    double time = kNoTime;
    if (monitorPoint_ == kMonitorMarkIn)
        time = module_.getMark(Kv::MarkTypes::In);
    else if (monitorPoint_ == kMonitorMarkOut)
        time = module_.getMark(Kv::MarkTypes::Out);
    return time != kNoTime ? time : getCurrentTime();
}
