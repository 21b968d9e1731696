#include "interchange/MarkerPlaces.h"

#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"
#include "platform/store/Edit.h"

#include <algorithm>

namespace cutroom {

namespace {

Status refusal(const std::string& text, const char* reason) {
    return {StatusCode::damaged, {}, text + ' ' + reason};
}

} // namespace

double onDayOf(const TimeRange& extents, double place, const TimecodeFormat& format) {
    const double first = std::min(0.0, extents.getStart()) - kTimeTolerance;
    const double last = extents.getEnd() + kTimeTolerance;
    const Flicks day = format.rate.frameToFlicks(framesPerDay(format));
    if (!isStorableTime(place) || day == 0 || (place >= first && place <= last))
        return place;
    Flicks behind = (toFlicks(place) - toFlicks(first)) % day;
    behind += behind < 0 ? day : 0;
    const double inside = toSeconds(toFlicks(first) + behind);
    return inside <= last ? inside : place;
}

MarkerPlaces::MarkerPlaces(const EditPtr& edit, MarkerClock clock)
    : timecodes_(edit), clock_(clock), start_(edit->getStartTime()), end_(edit->getEndTime()) {}

Result<double> MarkerPlaces::inside(double seconds, const std::string& text) const {
    if (!isStorableTime(seconds))
        return refusal(text, "is no place of this edit");
    const double place = onDayOf({start_, end_}, seconds, format());
    if (place < std::min(0.0, start_) - kTimeTolerance)
        return refusal(text, "lies before the edit");
    return place;
}

Result<double> MarkerPlaces::ofTimecode(std::string_view text) const {
    const std::string said(trim(text));
    bool drop = false;
    if (!parseTimecode(said, format(), &drop))
        return refusal('"' + said + '"', "is no timecode of this edit");
    if (drop && !format().dropFrame && format().rate.allowsDropFrame())
        return refusal(said, "is drop frame; this edit counts without");
    const auto place = timecodes_.timeOf(said);
    return place ? inside(*place, said) : refusal(said, "is no place of this edit");
}

Result<double> MarkerPlaces::ofClock(Flicks time) const {
    const std::int64_t milliseconds = time / (kFlicksPerSecond / 1000);
    if (clock_ == MarkerClock::media) {
        const Flicks place = time + toFlicks(start_);
        return toSeconds(format().rate.frameToFlicks(format().rate.flicksToFrameNearest(place)));
    }
    const std::int64_t frame =
        format().rate.flicksToFrameNearest(milliseconds % 1000 * (kFlicksPerSecond / 1000));
    const std::int64_t nominal = format().rate.nominal();
    std::int64_t second = milliseconds / 1000 + frame / nominal;
    std::int64_t label = frame % nominal;
    const auto text = [&] {
        return cutroom::format("%02lld:%02lld:%02lld:%02lld", static_cast<long long>(second / 3600),
                               static_cast<long long>(second / 60 % 60),
                               static_cast<long long>(second % 60), static_cast<long long>(label));
    };
    // Drop-frame counting leaves out the first labels of a minute.
    while (!parseTimecode(text(), format()) && label + 1 < nominal)
        ++label;
    return ofTimecode(text());
}

double MarkerPlaces::framesOn(double seconds, std::int64_t frames) const {
    const Kv::FrameRate& rate = format().rate;
    return toSeconds(rate.frameToFlicks(rate.flicksToFrameNearest(toFlicks(seconds)) + frames));
}

} // namespace cutroom
