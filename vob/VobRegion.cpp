// Extents, duration and the visible region of a Vob.
#include "platform/base/Log.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr char kZoom[] = "stripv_zoom";

bool isAway(double time, const TimeRange& range) { return !range.contains(time, kTimeTolerance); }

// From the first start to the last end of the selected channels, as `Start` and `End` give them;
// nothing when no channel has a start.
template <double (Cel::*Start)() const, double (Cel::*End)() const>
std::optional<TimeRange> selectedRange(const Edit& edit, const EditModule& module) {
    double start = std::numeric_limits<double>::max();
    double end = std::numeric_limits<double>::lowest();
    for (const IdStamp& channel : module.getSelectedChans()) {
        const Kv::Ptr<Cel> cel = edit.get_edit_cel_p(channel);
        if (!cel || (*cel.*Start)() == kNoTime)
            continue;
        start = std::min(start, (*cel.*Start)());
        end = std::max(end, (*cel.*End)());
    }
    if (start > end)
        return std::nullopt;
    return TimeRange(start, end);
}

// The significant part of the selected channels; all of it when none of them has material, as the
// edit counts its own.
TimeRange significantRange(const Edit& edit, const EditModule& module) {
    if (const auto range =
            selectedRange<&Cel::get_significant_start_time, &Cel::get_significant_end_time>(edit,
                                                                                            module))
        return *range;
    return selectedRange<&Cel::getStartTime, &Cel::getEndTime>(edit, module).value_or(TimeRange());
}

} // namespace

// --- extents -------------------------------------------------------------------------------------

TimeRange Vob::editRange() const {
    return edit_ ? TimeRange(edit_->getStartTime(), edit_->getEndTime()) : TimeRange();
}

double Vob::getTotalDuration() const {
    if (!edit_)
        return 0;
    const double duration = VobManager::getTotalDurationBySelection()
                                ? significantRange(*edit_, module_).size()
                                : edit_->getSignificantEndTime() - edit_->getSignificantStartTime();
    if (duration >= -kTimeTolerance)
        return duration;
    LogBoth("Vob::getTotalDuration() : Vob has negative duration, set to 0\n");
    return 0;
}

void Vob::resetEditExtents() {
    if (!edit_)
        return;
    const bool showsAll = viewRegion_ == extents_;
    extents_ = editRange();
    if (showsAll)
        viewRegion_ = extents_;
}

// --- region --------------------------------------------------------------------------------------

// Moves `region` into the edit, cuts off what still lies outside, and widens what is narrower than
// a frame.
TimeRange Vob::fitRegion(const TimeRange& region) const {
    const TimeRange edit = editRange();
    const double s = edit.getStart();
    const double e = edit.getEnd();
    double start = region.getStart();
    double end = region.getEnd();
    if (end > e) {
        start = std::max(s, e - region.size());
        end = e;
    } else if (start < s) {
        start = s;
        end = std::min(e, s + region.size());
    }
    if (isAway(start, edit))
        start = s;
    if (isAway(end, edit))
        end = e;

    const double frame = edit_->getCelResolution();
    if (end - start < frame) {
        const double width = 2 * frame;
        if (start == s) {
            end = width; // a time, not a distance from the start
        } else if (end == e) {
            start = e - width;
        } else {
            const double centre = std::round((start + end) / 2 / frame) * frame;
            start = centre - width / 2;
            end = centre + width / 2;
        }
    }
    return {start, end};
}

void Vob::setViewRegion(const TimeRange& region, bool notify) {
    if (!edit_ || !std::isfinite(region.getStart()) || !std::isfinite(region.getEnd()))
        return;
    const TimeRange fitted = fitRegion(region);
    if (fitted == viewRegion_)
        return;
    viewRegion_ = fitted;
    if (PermissionsManager::instance().canWrite(cookie_)) {
        const double zoom = fitted == extents_ ? 0.0 : fitted.size();
        if (edit_->setConfig(kZoom, zoom))
            edit_->setDirty();
    }
    if (notify)
        addModification(kVobViewRegion);
}

// The region as it was left; where only its width is known, it lies around the current time.
void Vob::restoreViewRegion() {
    TimeRange region = extents_;
    if (const auto stored = edit_->getStoredViewRegion()) {
        region = *stored;
    } else if (const auto text = edit_->getConfig(kZoom)) {
        const double width = cutroom::parseDouble(*text).value_or(0);
        if (cutroom::isStorableTime(width) && width > 0) {
            const double centre = getCurrentTime();
            region = {centre - width / 2, centre + width / 2};
        }
    }
    if (!(region == extents_))
        viewRegion_ = fitRegion(region);
}

// Tells whether a change of the edit moved the region.
bool Vob::validateViewRegion(const EditModifications& editChanges) {
    constexpr auto kLengthMayDiffer =
        EditModifications::bit(kModEventsAdded) | EditModifications::bit(kModEventsRemoved) |
        EditModifications::bit(kModEventsTrimmed) | EditModifications::bit(kModRestored) |
        EditModifications::bit(kModFlattened) | EditModifications::bit(kModStartTime) |
        EditModifications::bit(kModLength) | EditModifications::bit(kModChannelsRemoved);
    if (!edit_ || !editChanges.includesAnyOf(kLengthMayDiffer))
        return false;
    const TimeRange fitted = fitRegion(viewRegion_);
    if (fitted == viewRegion_)
        return false;
    viewRegion_ = fitted;
    return true;
}
