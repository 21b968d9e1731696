#include "interchange/EdlList.h"

#include "platform/base/Characters.h"
#include "platform/base/Strings.h"

#include <array>

namespace cutroom {

namespace {

// The bytes up to a control-Z, the end mark of old systems, and without NULs behind the text.
std::string_view textPart(std::string_view bytes) {
    if (const auto end = bytes.find('\x1A'); end != std::string_view::npos)
        bytes = bytes.substr(0, end);
    while (!bytes.empty() && bytes.back() == '\0')
        bytes.remove_suffix(1);
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF")
        bytes.remove_prefix(3);
    return bytes;
}

std::string fromLatin1(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    for (const char c : bytes) {
        const auto value = static_cast<unsigned char>(c);
        if (value < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0 | (value >> 6));
            text += static_cast<char>(0x80 | (value & 0x3F));
        }
    }
    return text;
}

bool readNumber(std::string_view& text, std::size_t most, int& value) {
    std::size_t digits = 0;
    value = 0;
    while (digits < text.size() && digits < most && isDigit(text[digits]))
        value = value * 10 + (text[digits++] - '0');
    text.remove_prefix(digits);
    return digits > 0;
}

} // namespace

std::vector<std::string> edlLines(std::string_view bytes, bool* latin1) {
    bytes = textPart(bytes);
    *latin1 = !isUtf8(bytes);
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t end = bytes.find_first_of("\r\n", at);
        if (end == std::string_view::npos)
            end = bytes.size();
        const auto line = bytes.substr(at, end - at);
        lines.push_back(*latin1 ? fromLatin1(line) : std::string(line));
        const bool pair = end + 1 < bytes.size() && bytes[end] == '\r' && bytes[end + 1] == '\n';
        at = end + (pair ? 2 : 1);
    }
    return lines;
}

std::optional<EdlLabel> parseEdlLabel(std::string_view text) noexcept {
    EdlLabel label;
    const std::array<int*, 3> parts = {&label.hours, &label.minutes, &label.seconds};
    char before = '\0';
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!readNumber(text, 2, *parts[i]) || text.empty())
            return {};
        const char separator = text.front();
        const bool last = i + 1 == parts.size();
        const bool dropMark = separator == ';' || separator == '.' || separator == ',';
        // Only the mark before the frames counts. Some writers put `;` everywhere and mean drop
        // frame; those that put points everywhere just write times so.
        if (separator != ':' && !dropMark)
            return {};
        label.drop = last && dropMark && (separator == ';' || separator != before);
        before = separator;
        text.remove_prefix(1);
    }
    if (!readNumber(text, 3, label.frames) || !text.empty() || label.minutes > 59 ||
        label.seconds > 59)
        return {};
    // The end of the day has two names.
    if (label.hours == 24 && label.minutes == 0 && label.seconds == 0 && label.frames == 0)
        label.hours = 0;
    if (label.hours > 23)
        return {};
    return label;
}

bool comesBefore(const EdlLabel& a, const EdlLabel& b) noexcept {
    constexpr int kPerSecond = 1000; // more than frames have numbers
    const auto apart = edlFrame(b, kPerSecond, false) - edlFrame(a, kPerSecond, false);
    return apart > 0 && apart <= std::int64_t{43'200} * kPerSecond;
}

std::int64_t edlFrame(const EdlLabel& label, int nominal, bool drop) noexcept {
    const std::int64_t minutes = label.hours * 60 + label.minutes;
    const std::int64_t count = (minutes * 60 + label.seconds) * nominal + label.frames;
    const std::int64_t droppedPerMinute = nominal / 15; // 2 at 30, 4 at 60
    return drop ? count - droppedPerMinute * (minutes - minutes / 10) : count;
}

} // namespace cutroom
