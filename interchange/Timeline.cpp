#include "interchange/Timeline.h"

#include "platform/base/Strings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

namespace cutroom {

void addWarning(Timeline& timeline, const std::string& text) {
    auto& warnings = timeline.warnings;
    if (std::find(warnings.begin(), warnings.end(), text) == warnings.end())
        warnings.push_back(text);
}

namespace {

constexpr std::array<std::pair<std::string_view, std::uint32_t>, 27> kColours = {{
    {"red", 0xFF0000},     {"green", 0x00FF00},  {"blue", 0x0000FF},   {"cyan", 0x00FFFF},
    {"magenta", 0xFF00FF}, {"yellow", 0xFFFF00}, {"white", 0xFFFFFF},  {"black", 0x000000},
    {"pink", 0xFFC0CB},    {"orange", 0xFFA500}, {"purple", 0x800080}, {"grey", 0x808080},
    {"gray", 0x808080},    {"brown", 0xA52A2A},  {"violet", 0xEE82EE}, {"lavender", 0xE6E6FA},
    {"fuchsia", 0xFF00AA}, {"rose", 0xFF007F},   {"sky", 0x87CEEB},    {"mint", 0x98FF98},
    {"lemon", 0xFFF44F},   {"sand", 0xC2B280},   {"cocoa", 0xD2691E},  {"cream", 0xFFFDD0},
    {"teal", 0x008080},    {"denim", 0x1560BD},  {"gold", 0xFFD700},
}};

} // namespace

std::optional<std::uint32_t> markerColour(std::string_view text) {
    if (text.size() == 7 && text.front() == '#') {
        std::uint32_t value = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data() + 1, end, value, 16);
        return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
    }
    for (const auto& [name, value] : kColours)
        if (text.size() == name.size() && equalNoCase(text, name))
            return value;
    return {};
}

std::string markerColourName(std::uint32_t colour) {
    for (const auto& [name, value] : kColours)
        if (value == colour)
            return std::string(name);
    return format("#%06x", colour & 0xFFFFFFu);
}

TrackKind trackKind(std::string_view text) {
    if (equalNoCase(text, "video"))
        return TrackKind::video;
    if (equalNoCase(text, "audio"))
        return TrackKind::audio;
    if (equalNoCase(text, "subtitle") || equalNoCase(text, "subtitles"))
        return TrackKind::subtitle;
    return TrackKind::other;
}

namespace {

// Moves times to frames, and remembers how far the farthest had to go.
class Rounder {
public:
    explicit Rounder(const Kv::FrameRate& rate) : rate_(rate) {}

    Flicks operator()(Flicks time) {
        const Flicks rounded = rate_.frameToFlicks(rate_.flicksToFrameNearest(time));
        const Flicks by = std::abs(rounded - time);
        moved_ += static_cast<double>(by) >
                  rate_.frameDuration() * static_cast<double>(kFlicksPerSecond) / 1000;
        farthest_ = std::max(farthest_, by);
        return rounded;
    }

    long moved() const { return moved_; }
    double farthest() const { return toSeconds(farthest_); }

private:
    const Kv::FrameRate rate_;
    long moved_ = 0;
    Flicks farthest_ = 0;
};

void roundItem(Item& item, Rounder& toFrame) {
    const Flicks cut = item.cut();
    const Flicks start = toFrame(item.start);
    const Flicks end = toFrame(item.end());
    if (item.type == ItemType::transition) {
        item.inOffset = std::max<Flicks>(0, toFrame(cut) - start);
        item.outOffset = std::max<Flicks>(0, end - start - item.inOffset);
    }
    item.start = start;
    item.duration = end - start;
}

} // namespace

void roundToFrames(Timeline& timeline) {
    Rounder toFrame(timeline.rate.rate);
    timeline.duration = toFrame(timeline.duration);
    for (Track& track : timeline.tracks) {
        for (Item& item : track.items)
            roundItem(item, toFrame);
        track.duration = toFrame(track.duration);
        timeline.duration = std::max(timeline.duration, track.duration);
    }
    for (Marker& marker : timeline.markers) {
        const Flicks end = toFrame(marker.start + marker.duration);
        marker.start = toFrame(marker.start);
        marker.duration = end - marker.start;
    }
    if (toFrame.moved() > 0)
        addWarning(timeline, format("cuts and markers moved to the nearest frame: %ld, by at most "
                                    "%.3f s",
                                    toFrame.moved(), toFrame.farthest()));
}

} // namespace cutroom
