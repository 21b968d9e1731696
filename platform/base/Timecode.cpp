#include "platform/base/Timecode.h"

#include "platform/base/Strings.h"

namespace cutroom {

namespace {

constexpr int kMinutesPerDay = 24 * 60;

// The numbers behind a format.
struct Counting {
    explicit Counting(const TimecodeFormat& format) noexcept
        : labels(format.rate.nominal()),
          dropped(format.dropFrame && format.rate.allowsDropFrame() ? labels / 15 : 0) {}

    std::int64_t framesPerMinute() const noexcept { return labels * 60 - dropped; }
    // Nine minutes that leave out labels and one that does not.
    std::int64_t framesPerTenMinutes() const noexcept { return framesPerMinute() * 10 + dropped; }
    std::int64_t framesPerDay() const noexcept {
        return framesPerTenMinutes() * (kMinutesPerDay / 10);
    }
    // The count that plain labelling would give the label of frame `frame` of a day.
    std::int64_t withDropped(std::int64_t frame) const noexcept {
        const std::int64_t tens = frame / framesPerTenMinutes();
        const std::int64_t rest = frame % framesPerTenMinutes();
        // The first minute of ten is the long one.
        const std::int64_t minutes = rest < dropped ? 0 : (rest - dropped) / framesPerMinute();
        return frame + dropped * (9 * tens + minutes);
    }

    std::int64_t labels;  // a second
    std::int64_t dropped; // a minute that leaves out labels; 0 for plain counting
};

int frameDigits(const Counting& count) noexcept { return count.labels > 100 ? 3 : 2; }

// `digits` decimal digits at the front of `text`, taken off it; -1 when there are fewer.
std::int64_t takeNumber(std::string_view& text, std::size_t digits) noexcept {
    if (text.size() < digits)
        return -1;
    std::int64_t value = 0;
    for (const char c : text.substr(0, digits)) {
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    text.remove_prefix(digits);
    return value;
}

char takeChar(std::string_view& text) noexcept {
    if (text.empty())
        return '\0';
    const char c = text.front();
    text.remove_prefix(1);
    return c;
}

struct Label {
    std::int64_t hours = 0;
    std::int64_t minutes = 0;
    std::int64_t seconds = 0;
    std::int64_t frames = 0;
    char separator = ':';
    bool wideFrames = false; // three digits

    bool isDrop() const noexcept { return separator != ':'; }
};

// The parts of a label; frames in two digits, or in three.
std::optional<Label> takeApart(std::string_view text) noexcept {
    Label label;
    label.hours = takeNumber(text, 2);
    const char first = takeChar(text);
    label.minutes = takeNumber(text, 2);
    const char second = takeChar(text);
    label.seconds = takeNumber(text, 2);
    label.separator = takeChar(text);
    label.wideFrames = text.size() == 3;
    label.frames = takeNumber(text, label.wideFrames ? 3 : 2);
    constexpr std::string_view kSeparators = ":;.,";
    if (label.hours < 0 || first != ':' || label.minutes < 0 || second != ':' ||
        label.seconds < 0 || kSeparators.find(label.separator) == std::string_view::npos ||
        label.frames < 0 || !text.empty())
        return std::nullopt;
    return label;
}

} // namespace

std::int64_t framesPerDay(const TimecodeFormat& format) noexcept {
    return format.rate.valid() ? Counting(format).framesPerDay() : 0;
}

std::string timecodeText(std::int64_t frame, const TimecodeFormat& format) {
    if (!format.rate.valid())
        return "--:--:--:--";
    const Counting count(format);
    std::int64_t inDay = frame % count.framesPerDay();
    if (inDay < 0)
        inDay += count.framesPerDay();
    const std::int64_t plain = count.withDropped(inDay);
    const std::int64_t seconds = plain / count.labels;
    std::string text;
    appendNumber(text, seconds / 3600, 2);
    text += ':';
    appendNumber(text, seconds / 60 % 60, 2);
    text += ':';
    appendNumber(text, seconds % 60, 2);
    text += count.dropped ? ';' : ':';
    appendNumber(text, plain % count.labels, frameDigits(count));
    return text;
}

std::optional<std::int64_t> parseTimecode(std::string_view text, const TimecodeFormat& format,
                                          bool* sawDrop) noexcept {
    const auto label = takeApart(text);
    if (!label || !format.rate.valid())
        return std::nullopt;
    const Counting count(TimecodeFormat{format.rate, format.dropFrame || label->isDrop()});
    if (label->wideFrames && count.labels <= 100)
        return std::nullopt;
    if (label->minutes > 59 || label->seconds > 59 || label->frames >= count.labels)
        return std::nullopt;
    const std::int64_t minutes = label->hours * 60 + label->minutes;
    const bool leavesOut = minutes % 10 != 0 && label->seconds == 0;
    if (leavesOut && label->frames < count.dropped)
        return std::nullopt;
    if (sawDrop)
        *sawDrop = label->isDrop();
    const std::int64_t plain = (minutes * 60 + label->seconds) * count.labels + label->frames;
    return plain - count.dropped * (minutes - minutes / 10);
}

} // namespace cutroom
