// The drawn timeline:
//
//   Title   25 fps   01:00:00:00 + 00:00:10:00 (250 frames)
//
//        01:00:00:00             01:00:05:00
//   V1   [clip A      >clip B     ]··········
//   A1   [sound                              ]
//        ^1          ^2
//
//   1  01:00:00:00  red  Name: description
#include "cli/Command.h"
#include "cli/EditView.h"
#include "cli/Names.h"

#include "platform/base/Strings.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace cutroom::cli {

namespace {

// As much of `text` as fits into `width` columns, padded with `fill`.
std::wstring fitted(std::wstring_view text, int width, wchar_t fill) {
    std::wstring out;
    int used = 0;
    for (const wchar_t c : text) {
        const int columns = displayWidth(c);
        if (used + columns > width)
            break;
        out += c < L' ' || (c >= 0x7f && c < 0xa0) ? L' ' : c;
        used += columns;
    }
    out.append(static_cast<std::size_t>(std::max(width - used, 0)), fill);
    return out;
}

int columnsOf(std::wstring_view text) {
    int columns = 0;
    for (const wchar_t c : text)
        columns += displayWidth(c);
    return columns;
}

// `text` broken at blanks into lines of `width` columns, the first of which is used up to `used`; a
// longer word stands alone.
std::vector<std::wstring> wrapped(const std::wstring& text, int width, int used) {
    std::vector<std::wstring> lines(1);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(L' ', at), text.size());
        const std::wstring word = text.substr(at, end - at);
        if (used > 0 && used + 1 + columnsOf(word) > width) {
            lines.emplace_back();
            used = 0;
        }
        lines.back() += (lines.back().empty() ? L"" : L" ") + word;
        used += 1 + columnsOf(word);
        at = end + 1;
    }
    return lines;
}

class Drawing {
public:
    Drawing(const EditView& view, int width, bool colour)
        : view_(view), colour_(colour), width_(width) {
        for (const TrackView& track : view.tracks)
            labelWidth_ = std::max(labelWidth_, static_cast<int>(toWide(track.name).size()));
        labelWidth_ = std::clamp(labelWidth_ + 2, 6, std::max(width / 4, 6));
        span_ = std::max(width - labelWidth_ - 1, 20);
    }

    std::string text() {
        heading();
        if (view_.durationFrames > 0) {
            ruler();
            // The topmost picture is drawn first, as in a viewer; sound below it.
            for (auto track = view_.tracks.rbegin(); track != view_.tracks.rend(); ++track)
                if (track->kind == "video")
                    row(*track);
            for (const TrackView& track : view_.tracks)
                if (track.kind != "video")
                    row(track);
            if (!view_.markers.empty())
                pins();
        }
        markerList();
        return std::move(out_);
    }

private:
    void line(const std::wstring& content) {
        std::wstring trimmed = content;
        while (!trimmed.empty() && trimmed.back() == L' ')
            trimmed.pop_back();
        out_ += toUtf8(trimmed) + '\n';
    }
    std::string painted(const char* code, const std::string& content) const {
        return colour_ ? std::string("\x1b[") + code + 'm' + content + "\x1b[0m" : content;
    }
    int column(double frames) const {
        const double share = frames / static_cast<double>(view_.durationFrames);
        return std::clamp(static_cast<int>(std::lround(share * span_)), 0, span_);
    }
    std::wstring label(std::string_view name) const {
        return fitted(toWide(name), labelWidth_ - 1, L' ') + L' ';
    }

    void heading() {
        const std::string name = oneLine(view_.name);
        const std::string about = rateText(view_.format.rate) +
                                  (view_.format.dropFrame ? " drop frame" : "") + "   from " +
                                  view_.startTimecode + ", " +
                                  durationText(view_.durationFrames, view_.format) + " long (" +
                                  std::to_string(view_.durationFrames) + " frames)";
        const bool fits = columnsOf(toWide(name + "   " + about)) <= width_;
        for (const std::wstring& part : wrapped(toWide(name), width_, 0))
            out_ += painted("1", toUtf8(part)) + (fits ? "   " : "\n");
        for (const std::wstring& part : wrapped(toWide(about), width_, 0))
            out_ += toUtf8(part) + '\n';
    }
    void ruler() {
        constexpr int kMarkWidth = 14;
        std::wstring marks(static_cast<std::size_t>(labelWidth_), L' ');
        const auto first = parseTimecode(view_.startTimecode, view_.format).value_or(0);
        for (int at = 0; at + kMarkWidth <= span_ + 3; at += kMarkWidth) {
            const auto frame = view_.durationFrames * at / span_;
            marks +=
                fitted(L"|" + toWide(timecodeText(first + frame, view_.format)), kMarkWidth, L' ');
        }
        line(L"");
        line(marks);
    }
    void row(const TrackView& track) {
        std::wstring cells(static_cast<std::size_t>(span_), L' ');
        const ItemView* before = nullptr; // the transition into the next clip
        for (const ItemView& item : track.items) {
            if (item.type != ItemView::Type::transition)
                box(cells, item, before);
            before = item.type == ItemView::Type::transition ? &item : nullptr;
        }
        for (const ItemView& item : track.items)
            if (item.type == ItemView::Type::transition)
                cross(cells, item);
        line(label(track.name) + cells);
    }
    // The name stands behind the transition that lies over the clip's head.
    void box(std::wstring& cells, const ItemView& item, const ItemView* into) const {
        const int from = column(static_cast<double>(item.start));
        const int to = column(static_cast<double>(item.start + item.duration));
        if (to <= from)
            return;
        const bool clip = item.type == ItemView::Type::clip;
        std::wstring content = clip ? L"[" : L"";
        if (clip && into)
            content.append(
                static_cast<std::size_t>(std::max(
                    column(static_cast<double>(into->start + into->duration)) - from - 1, 0)),
                L'─');
        content += clip ? toWide(item.name) : L"";
        content = fitted(content, to - from, clip ? (item.enabled ? L'─' : L'╌') : L'·');
        if (clip && to - from > 1)
            content.back() = L']';
        cells.replace(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from), content);
    }
    void cross(std::wstring& cells, const ItemView& item) const {
        const int from = std::min(column(static_cast<double>(item.start)), span_ - 1);
        const int to = std::max(column(static_cast<double>(item.start + item.duration)), from + 1);
        for (int at = from; at < std::min(to, span_); ++at)
            if (static_cast<std::size_t>(at) < cells.size())
                cells[static_cast<std::size_t>(at)] = L'×';
    }
    void pins() {
        std::wstring cells(static_cast<std::size_t>(span_ + 1), L' ');
        int number = 0;
        for (const MarkerView& marker : view_.markers) {
            const auto at = static_cast<std::size_t>(column(
                marker.start / view_.durationSeconds * static_cast<double>(view_.durationFrames)));
            const std::wstring pin = L"^" + std::to_wstring(++number);
            const std::wstring room(pin.size() + (at + pin.size() < cells.size()), L' ');
            if (cells.compare(at, room.size(), room) == 0)
                cells.replace(at, pin.size(), pin);
            else if (cells[at] == L' ')
                cells[at] = L'^';
        }
        line(label("") + cells);
    }
    void markerList() {
        if (view_.markers.empty())
            return;
        out_ += '\n';
        int number = 0;
        for (const MarkerView& marker : view_.markers) {
            std::string text = marker.name;
            if (!marker.description.empty())
                text += (text.empty() ? "" : ": ") + marker.description;
            const std::string place =
                format("%3d  %s%s%s  ", ++number, marker.startTimecode.c_str(),
                       marker.end ? " - " : "", marker.endTimecode.c_str());
            out_ += place + painted("2", marker.colour);
            constexpr int kIndent = 5;
            const int used = static_cast<int>(place.size() + marker.colour.size()) + 2 - kIndent;
            const auto lines = wrapped(toWide(oneLine(text)), width_ - kIndent, used);
            out_ += (lines.front().empty() ? "" : "  " + toUtf8(lines.front())) + '\n';
            for (std::size_t i = 1; i < lines.size(); ++i)
                out_ += std::string(kIndent, ' ') + toUtf8(lines[i]) + '\n';
        }
    }

    const EditView& view_;
    const bool colour_;
    const int width_;
    int labelWidth_ = 0;
    int span_ = 0;
    std::string out_;
};

} // namespace

std::string draw(const EditView& view, int width, bool colour) {
    return Drawing(view, width, colour).text();
}

} // namespace cutroom::cli
