// Where an edit begins and ends, and how it was last left.
#include "platform/store/EditImpl.h"

#include <algorithm>

namespace {

bool derived(const cutroom::EditChannel& channel) { return (channel.subType & kSubDerived) != 0; }

// A time from the configuration; `otherwise` where there is none, or it is no time.
double storedTime(const configb& config, const char* key, double otherwise) {
    const auto value = config.getDouble(key);
    return value && cutroom::isStorableTime(*value) ? *value : otherwise;
}

} // namespace

double Edit::getStartTime() const {
    const Lock lock(*this);
    double start = 0;
    double end = 0;
    return impl_->state.extents(start, end) ? start : 0;
}

double Edit::getEndTime() const {
    const Lock lock(*this);
    double start = 0;
    double end = 0;
    return impl_->state.extents(start, end) ? end : 0;
}

double Edit::getSignificantStartTime() const {
    const Lock lock(*this);
    double start = kNoTime;
    for (const cutroom::EditChannel& channel : impl_->state.channels)
        if (!derived(channel))
            start = std::min(start, channel.cel->get_significant_start_time());
    return start == kNoTime ? getStartTime() : start;
}

double Edit::getSignificantEndTime() const {
    const Lock lock(*this);
    double last = -kNoTime;
    for (const cutroom::EditChannel& channel : impl_->state.channels) {
        const double end = derived(channel) ? kNoTime : channel.cel->get_significant_end_time();
        if (end != kNoTime)
            last = std::max(last, end);
    }
    return last == -kNoTime ? getEndTime() : last;
}

double Edit::getStartStripTime() const {
    const Lock lock(*this);
    for (const cutroom::EditChannel& channel : impl_->state.channels) {
        const double start = channel.cel->get_significant_start_time();
        if (!derived(channel) && start != kNoTime)
            return channel.cel->get_strip_time(start);
    }
    return 0;
}

double Edit::getStoredCurrentTime() const {
    const Lock lock(*this);
    return storedTime(config(), "BACKUP_CURRENT", 0);
}

double Edit::getStoredMark(Kv::MarkTypes::MarkType type) const {
    const Lock lock(*this);
    const char* const key = type == Kv::MarkTypes::In ? "BACKUP_MARK1" : "BACKUP_MARK2";
    return storedTime(config(), key, kNoTime);
}

std::optional<TimeRange> Edit::getStoredViewRegion() const {
    const Lock lock(*this);
    const double start = storedTime(config(), "BACKUP_RANGE_START", kNoTime);
    const double end = storedTime(config(), "BACKUP_RANGE_END", kNoTime);
    if (start == kNoTime || end == kNoTime)
        return std::nullopt;
    return TimeRange(start, end);
}
