#include "platform/store/EditLabel.h"

#include "platform/base/Time.h"

#include <algorithm>
#include <cmath>
#include <limits>

LightweightString<char> LabelPoint::removePadding() const {
    return LightweightString<char>(cutroom::trim(text_));
}

namespace {

// Wide enough for "HH:MM:SS:FF" and a blank on either side, as counters show it.
constexpr std::size_t kCounterWidth = 13;

LightweightString<char> padded(const LightweightString<char>& text) {
    if (text.size() >= kCounterWidth)
        return text;
    const std::size_t left = (kCounterWidth - text.size()) / 2;
    return std::string(left, ' ') + text + std::string(kCounterWidth - text.size() - left, ' ');
}

bool countsTimecode(eLabelType type) {
    return type != kLabelFrames && type != kLabelFeet && type != kLabelKeycode && type != kLabelInk;
}

// 35 mm film, four perforations a frame: 16 frames a foot.
constexpr std::int64_t kFramesPerFoot = 16;

LightweightString<char> feetText(std::int64_t frame) {
    return cutroom::format("%s%lld+%02lld", frame < 0 ? "-" : "",
                           static_cast<long long>(std::abs(frame / kFramesPerFoot)),
                           static_cast<long long>(std::abs(frame % kFramesPerFoot)));
}

LightweightString<char> labelText(eLabelType type, std::int64_t frame,
                                  const cutroom::TimecodeFormat& format) {
    if (countsTimecode(type))
        return cutroom::timecodeText(frame, format);
    return type == kLabelFrames || type == kLabelInk
               ? cutroom::toText(static_cast<long long>(frame))
               : feetText(frame);
}

std::optional<std::int64_t> parseFeet(std::string_view text) {
    const auto plus = text.find('+');
    if (plus == std::string_view::npos)
        return std::nullopt;
    const auto feet = cutroom::parseInt(text.substr(0, plus));
    const auto frames = cutroom::parseInt(text.substr(plus + 1));
    if (!feet || !frames || *frames < 0 || *frames >= kFramesPerFoot ||
        std::abs(*feet) > (std::int64_t{1} << 48))
        return std::nullopt;
    return *feet * kFramesPerFoot + (text.front() == '-' ? -*frames : *frames);
}

// The sum, without overflow: the numbers come from files and may have any value.
std::int64_t plus(std::int64_t number, std::int64_t frames) noexcept {
    std::int64_t sum = 0;
    if (!__builtin_add_overflow(number, frames, &sum))
        return sum;
    return frames < 0 ? std::numeric_limits<std::int64_t>::min()
                      : std::numeric_limits<std::int64_t>::max();
}

} // namespace

std::int64_t EditLabel::get_abs_posn(std::int64_t offset) const noexcept {
    return plus(start_, offset);
}

LabelPoint EditLabel::pointAt(double seconds) const {
    if (!is_valid() || !cutroom::isStorableTime(seconds))
        return LabelPoint({});
    const auto frame = format_.rate.flicksToFrameFloor(cutroom::toFlicks(seconds));
    return LabelPoint(padded(labelText(type_, plus(start_, frame), format_)));
}

void EditLabel::adjustByTime(double seconds) noexcept {
    if (is_valid() && cutroom::isStorableTime(seconds))
        start_ = plus(start_, format_.rate.flicksToFrameNearest(cutroom::toFlicks(seconds)));
}

std::optional<double> EditLabel::timeOf(const LightweightString<char>& text) const {
    if (!is_valid())
        return std::nullopt;
    std::optional<std::int64_t> frame;
    bool drop = false;
    if (countsTimecode(type_))
        frame = cutroom::parseTimecode(text, format_, &drop);
    else if (type_ == kLabelFrames || type_ == kLabelInk)
        frame = cutroom::parseInt(text);
    else
        frame = parseFeet(text);
    if (drop && !format_.dropFrame && format_.rate.allowsDropFrame())
        return std::nullopt;
    std::int64_t fromStart = 0;
    if (!frame || __builtin_sub_overflow(*frame, start_, &fromStart))
        return std::nullopt;
    return cutroom::toSeconds(format_.rate.frameToFlicks(fromStart));
}

double mPosn_Xlate(std::int64_t position, const EditLabel& label, int unit, const Edit&) {
    if (unit != kUnitSeconds || !label.is_valid())
        return kNoTime;
    return cutroom::toSeconds(label.format().rate.frameToFlicks(position));
}
