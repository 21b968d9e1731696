#include "export/CueTimecodes.h"

#include "platform/base/Time.h"
#include "platform/prefs/Configuration.h"
#include "platform/store/Edit.h"

namespace cutroom {

CueTimecodes::CueTimecodes(const EditPtr& edit) {
    static const auto& convertTimecodes =
        *new ConfigValue<int>("convert_marker_timecodes", 1); // never destroyed
    if (!edit)
        return;
    format_ = {edit->getFrameRate(), edit->getDropFrame()};
    if (convertTimecodes.get() != 0)
        if (const EditLabel label = edit->getVideoTimecodeLabel(); label.is_valid()) {
            format_ = label.format();
            start_ = label.get_abs_posn();
        }
    const bool drops = format_.dropFrame && format_.rate.allowsDropFrame();
    if (const int labels = format_.rate.nominal(); !drops && labels <= 100)
        plainLabels_ = static_cast<unsigned>(labels);
    const std::int64_t flicks = format_.rate.frameToFlicks(1);
    if (flicks * format_.rate.num() == kFlicksPerSecond * format_.rate.den())
        flicksPerFrame_ = flicks;
}

std::int64_t CueTimecodes::frameAt(double seconds) const noexcept {
    const Flicks time = toFlicks(seconds);
    if (flicksPerFrame_ > 0 && time >= 0)
        return time / flicksPerFrame_;
    return format_.rate.flicksToFrameFloor(time);
}

void CueTimecodes::append(std::string& out, double seconds) const {
    std::int64_t label = 0;
    if (!format_.rate.valid() || !isStorableTime(seconds) ||
        __builtin_add_overflow(start_, frameAt(seconds), &label))
        return;
    if (plainLabels_ == 0 || label < 0 || label >= std::int64_t{plainLabels_} * 86400)
        out += timecodeText(label, format_);
    else
        appendPlain(out, static_cast<unsigned>(label));
}

// Plain counting within a day, which most files have, digit by digit.
void CueTimecodes::appendPlain(std::string& out, unsigned label) const {
    const unsigned second = label / plainLabels_;
    const unsigned parts[] = {second / 3600, second / 60 % 60, second % 60, label % plainLabels_};
    char text[] = "00:00:00:00";
    char* at = text;
    for (const unsigned part : parts) {
        at[0] = static_cast<char>('0' + part / 10);
        at[1] = static_cast<char>('0' + part % 10);
        at += 3;
    }
    out.append(text, sizeof text - 1);
}

std::optional<double> CueTimecodes::timeOf(std::string_view timecode) const {
    const auto label = parseTimecode(timecode, format_);
    std::int64_t frame = 0;
    if (!label || __builtin_sub_overflow(*label, start_, &frame))
        return std::nullopt;
    return toSeconds(format_.rate.frameToFlicks(frame));
}

} // namespace cutroom
