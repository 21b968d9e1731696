#include "interchange/SubtitleImport.h"

#include "platform/store/Edit.h"

#include <algorithm>
#include <optional>

namespace cutroom {

namespace {

bool wrappedIn(const SrtFile& file, std::wstring_view opening, std::wstring_view closing) {
    return std::all_of(file.cues.begin(), file.cues.end(), [&](const SrtCue& cue) {
        return std::all_of(cue.lines.begin(), cue.lines.end(), [&](const std::wstring& line) {
            return line.size() > opening.size() + closing.size() && line.starts_with(opening) &&
                   line.ends_with(closing);
        });
    });
}

void unwrap(SrtFile& file, std::size_t opening, std::size_t closing) {
    for (SrtCue& cue : file.cues)
        for (std::wstring& line : cue.lines)
            line = line.substr(opening, line.size() - opening - closing);
}

// The tags round every line, taken off and made flags. The exporter closes them in the order in
// which it opens them, other programs the other way round; both are read.
unsigned takeFont(SrtFile& file) {
    struct Wrapping {
        std::wstring_view opening;
        std::wstring_view closing;
        unsigned flags;
    };
    static constexpr Wrapping kKnown[] = {
        {L"<i><b>", L"</i></b>", kFontItalic | kFontBold},
        {L"<i><b>", L"</b></i>", kFontItalic | kFontBold},
        {L"<b><i>", L"</i></b>", kFontItalic | kFontBold},
        {L"<i>", L"</i>", kFontItalic},
        {L"<b>", L"</b>", kFontBold},
    };
    for (const Wrapping& one : kKnown)
        if (wrappedIn(file, one.opening, one.closing)) {
            unwrap(file, one.opening.size(), one.closing.size());
            return one.flags;
        }
    return 0;
}

struct Laid {
    std::vector<CelSegment> segments;
    std::size_t outside = 0;
    std::size_t shortened = 0;
};

// Sorts by place, which over midnight is not the order of the times, and cuts each short where the
// next one begins.
void putInOrder(Laid& laid) {
    const auto earlier = [](const CelSegment& a, const CelSegment& b) { return a.start < b.start; };
    std::stable_sort(laid.segments.begin(), laid.segments.end(), earlier);
    std::vector<CelSegment> kept;
    for (CelSegment& segment : laid.segments) {
        if (!kept.empty() && kept.back().end > segment.start) {
            ++laid.shortened;
            kept.back().end = segment.start;
            if (kept.back().start == segment.start)
                kept.pop_back();
        }
        kept.push_back(std::move(segment));
    }
    laid.segments = std::move(kept);
}

Laid layOut(const EditPtr& edit, const SrtFile& file, MarkerClock clock) {
    const MarkerPlaces places(edit, clock);
    const Kv::FrameRate rate = edit->getFrameRate();
    const auto frameOf = [&](Flicks time) -> std::optional<std::int64_t> {
        const auto place = places.ofClock(time);
        return place ? std::optional(rate.flicksToFrameNearest(toFlicks(*place))) : std::nullopt;
    };
    const std::int64_t length = rate.flicksToFrameNearest(toFlicks(edit->getEndTime()));
    const Cookie material = convertCookie(edit.getCookie(), 'T', 0);
    Laid laid;
    for (const SrtCue& cue : file.cues) {
        const auto from = frameOf(cue.start);
        if (!from || *from < 0 || *from >= length) {
            ++laid.outside;
            continue;
        }
        const auto to = std::clamp(frameOf(cue.end).value_or(length), *from + 1, length);
        CelSegment segment;
        segment.start = rate.frameToFlicks(*from);
        segment.end = rate.frameToFlicks(to);
        segment.material = material;
        segment.detail.lines = cue.lines;
        laid.segments.push_back(std::move(segment));
    }
    putInOrder(laid);
    return laid;
}

} // namespace

Result<SubtitleReport> importSubtitles(const EditModifier& edit, const SrtFile& file,
                                       const LightweightString<wchar_t>& name, MarkerClock clock) {
    if (!edit)
        return Status(StatusCode::notFound, {}, "there is no edit to lay subtitles into");
    SrtFile texts = file;
    const unsigned flags = takeFont(texts);
    const Laid laid = layOut(edit, texts, clock);
    if (laid.segments.empty())
        return Status(StatusCode::failed, toUtf8(edit->getName()),
                      std::string("no subtitle lies inside the edit; do its times count ") +
                          (clock == MarkerClock::media ? "timecode" : "from the first frame") +
                          "? (--clock)");
    SubtitleReport report;
    report.warnings = file.warnings;
    report.count = laid.segments.size();
    if (laid.outside)
        report.warnings.push_back(std::to_string(laid.outside) + " outside the edit, left out");
    if (laid.shortened)
        report.warnings.push_back(std::to_string(laid.shortened) +
                                  " cut short where the next one begins");
    report.channel = edit->addChan(kChanSubtitle);
    if (const Status set = edit->get_edit_cel_p(report.channel)->setSegments(laid.segments); !set) {
        edit->removeChan(report.channel, false);
        return set;
    }
    edit->setChanUserName(report.channel, name);
    SubtitleFont font;
    font.flags = flags;
    edit->setSubtitleFont(report.channel, font);
    return report;
}

} // namespace cutroom
