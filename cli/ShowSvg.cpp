// The picture of an edit: a timecode ruler, one row of boxes per track with their names,
// transitions over their cuts, markers as flags with their texts. Scalable Vector Graphics 1.1.
#include "cli/EditView.h"
#include "cli/Names.h"

#include "platform/base/Strings.h"

#include <algorithm>
#include <cmath>

namespace cutroom::cli {

namespace {

constexpr double kWidth = 1600; // of the drawing, in user units
constexpr double kLabel = 120;  // of the track names
constexpr double kMargin = 24;
constexpr double kRow = 44;
constexpr double kSoundRow = 34;
constexpr double kGap = 6;
constexpr double kHead = 96; // title and ruler
constexpr double kMarkerRow = 20;

// Text for XML: markup escaped, characters that XML 1.0 forbids left out.
std::string escaped(std::string_view text) {
    std::wstring out;
    for (const wchar_t c : toWide(text)) {
        if (c == L'<')
            out += L"&lt;";
        else if (c == L'&')
            out += L"&amp;";
        else if (c == L'"')
            out += L"&quot;";
        else if (c >= L' ' && c != L'\xFFFE' && c != L'\xFFFF')
            out += c;
    }
    return toUtf8(out);
}

std::string number(double value) { return format("%.2f", value); }

const char* fillOf(const std::string& kind) {
    if (kind == "video")
        return "#3d6fa5";
    if (kind == "audio")
        return "#3f8f6b";
    return kind == "subtitle" ? "#8a6bb0" : "#7a7f87";
}

class Picture {
public:
    explicit Picture(const EditView& view)
        : view_(view), scale_((kWidth - kLabel - 2 * kMargin) /
                              static_cast<double>(std::max<std::int64_t>(view.durationFrames, 1))) {
        for (const TrackView& track : view.tracks)
            if (track.kind == "video")
                order_.insert(order_.begin(), &track);
        for (const TrackView& track : view.tracks)
            if (track.kind != "video")
                order_.push_back(&track);
    }

    std::string text() {
        double y = kHead;
        std::string rows;
        for (const TrackView* track : order_)
            rows += row(*track, y);
        const double bottom = y;
        const std::string below = markers(y);
        return opening(y + kMargin) + ruler(bottom) + rows + pins() + below + "</svg>\n";
    }

private:
    double x(double frame) const { return kMargin + kLabel + frame * scale_; }

    std::string opening(double height) const {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " +
               number(kWidth) + ' ' + number(height) + "\" width=\"" + number(kWidth) +
               "\" height=\"" + number(height) +
               "\" font-family=\"Helvetica, Arial, sans-serif\" font-size=\"12\">\n"
               "<rect width=\"100%\" height=\"100%\" fill=\"#1d2026\"/>\n"
               "<text x=\"24\" y=\"36\" font-size=\"20\" fill=\"#f2f4f7\">" +
               escaped(view_.name) + "</text>\n<text x=\"24\" y=\"58\" fill=\"#a8b0bb\">" +
               escaped(rateText(view_.format.rate) + (view_.format.dropFrame ? " drop frame" : "") +
                       ", from " + view_.startTimecode + ", " +
                       durationText(view_.durationFrames, view_.format) + " long") +
               "</text>\n";
    }

    // Ticks at the shortest of these steps that leaves room for their timecodes.
    std::int64_t tickStep() const {
        const std::int64_t second = std::max(view_.format.rate.nominal(), 1);
        for (const std::int64_t step :
             {std::int64_t{1}, std::int64_t{5}, second / 2, second, 2 * second, 5 * second,
              10 * second, 30 * second, 60 * second, 300 * second, 600 * second, 1800 * second})
            if (step > 0 && static_cast<double>(step) * scale_ >= 96)
                return step;
        return 3600 * second;
    }

    std::string ruler(double bottom) const {
        std::string out;
        const auto first = parseTimecode(view_.startTimecode, view_.format).value_or(0);
        for (std::int64_t frame = 0; frame <= view_.durationFrames; frame += tickStep()) {
            const std::string at = number(x(static_cast<double>(frame)));
            out += "<line x1=\"" + at + "\" y1=\"72\" x2=\"" + at + "\" y2=\"" + number(bottom) +
                   "\" stroke=\"#343a44\"/>\n<text x=\"" + at +
                   "\" dx=\"4\" y=\"82\" font-size=\"11\" fill=\"#8d96a3\">" +
                   timecodeText(first + frame, view_.format) + "</text>\n";
        }
        return out;
    }

    std::string row(const TrackView& track, double& y) const {
        const double height = track.kind == "video" ? kRow : kSoundRow;
        std::string out = "<text x=\"24\" y=\"" + number(y + height / 2 + 4) +
                          "\" fill=\"#d5dae1\">" + escaped(track.name) + "</text>\n";
        for (const ItemView& item : track.items)
            if (item.type == ItemView::Type::clip)
                out += box(item, track.kind, y, height);
        for (const ItemView& item : track.items)
            if (item.type == ItemView::Type::transition)
                out += cross(item, y, height);
        y += height + kGap;
        return out;
    }

    std::string box(const ItemView& item, const std::string& kind, double y, double height) const {
        const double left = x(static_cast<double>(item.start));
        const double width = std::max(static_cast<double>(item.duration) * scale_, 0.5);
        const std::string media = item.media.empty() ? "" : "\n" + escaped(item.media);
        std::string out = "<g><title>" + escaped(item.name) + media + "</title><rect x=\"" +
                          number(left) + "\" y=\"" + number(y) + "\" width=\"" + number(width) +
                          "\" height=\"" + number(height) + "\" rx=\"3\" fill=\"" + fillOf(kind) +
                          "\" stroke=\"#1d2026\"" + (item.enabled ? "" : " fill-opacity=\"0.35\"") +
                          "/>";
        // A name that does not fit is cut, at about 7 units a character.
        const auto room = static_cast<std::size_t>(std::max(0.0, (width - 10) / 7));
        const std::wstring name = toWide(item.name);
        if (room >= 3 && !name.empty())
            out += "<text x=\"" + number(left + 5) + "\" y=\"" + number(y + height / 2 + 4) +
                   "\" fill=\"#ffffff\">" +
                   escaped(toUtf8(name.size() <= room ? name : name.substr(0, room - 1) + L"…")) +
                   "</text>";
        if (item.speed != 1.0 && room >= 6)
            out += "<text x=\"" + number(left + 5) + "\" y=\"" + number(y + height - 4) +
                   "\" font-size=\"9\" fill=\"#dfe5ee\">" + escaped(format("%g×", item.speed)) +
                   "</text>";
        return out + "</g>\n";
    }

    std::string cross(const ItemView& item, double y, double height) const {
        const double left = x(static_cast<double>(item.start));
        const double right = x(static_cast<double>(item.start + item.duration));
        const std::string top = number(y);
        const std::string bottom = number(y + height);
        return "<g stroke=\"#f0c35a\"><title>" + escaped(item.name) + "</title><rect x=\"" +
               number(left) + "\" y=\"" + top + "\" width=\"" +
               number(std::max(right - left, 1.0)) + "\" height=\"" + number(height) +
               "\" fill=\"#f0c35a\" fill-opacity=\"0.25\"/>" + "<path fill=\"none\" d=\"M" +
               number(left) + ' ' + bottom + 'L' + number(right) + ' ' + top + 'M' + number(left) +
               ' ' + top + 'L' + number(right) + ' ' + bottom + "\"/></g>\n";
    }

    double frameOf(double seconds) const { return seconds * view_.format.rate.asDouble(); }

    std::string pins() const {
        std::string out;
        for (const MarkerView& marker : view_.markers) {
            const double from = x(frameOf(marker.start));
            const double to = marker.end ? x(frameOf(*marker.end)) : from;
            const std::string colour = escaped(marker.colour);
            out += "<g><title>" + escaped(marker.name) + "</title><rect x=\"" + number(from) +
                   "\" y=\"86\" width=\"" + number(std::max(to - from, 2.0)) +
                   "\" height=\"6\" fill=\"" + colour + "\"/><path d=\"M" + number(from - 4) +
                   " 86h8l-4 8z\" fill=\"" + colour + "\" stroke=\"#1d2026\"/></g>\n";
        }
        return out;
    }

    std::string markers(double& y) const {
        std::string out;
        if (!view_.markers.empty())
            y += kGap;
        for (const MarkerView& marker : view_.markers) {
            y += kMarkerRow;
            const std::string base = number(y);
            out += "<rect x=\"24\" y=\"" + number(y - 9) +
                   "\" width=\"10\" height=\"10\" stroke=\"#555\" fill=\"" +
                   escaped(marker.colour) + "\"/><text x=\"44\" y=\"" + base +
                   "\" fill=\"#a8b0bb\">" + escaped(marker.startTimecode) +
                   (marker.end ? " – " + escaped(marker.endTimecode) : "") +
                   "</text><text x=\"220\" y=\"" + base + "\" fill=\"#e6eaef\">" +
                   escaped(marker.name +
                           (marker.name.empty() || marker.description.empty() ? "" : ": ") +
                           marker.description) +
                   "</text>\n";
        }
        return out;
    }

    const EditView& view_;
    const double scale_;
    std::vector<const TrackView*> order_; // as in a viewer: the topmost picture first
};

} // namespace

std::string toSvg(const EditView& view) { return Picture(view).text(); }

} // namespace cutroom::cli
