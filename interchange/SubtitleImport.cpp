#include "interchange/SubtitleImport.h"

#include "platform/base/Timecode.h"
#include "platform/store/Edit.h"

#include <algorithm>

namespace cutroom {

namespace {

// Where a file's times lie on the edit, in frames.
class Placer {
public:
    Placer(const Edit& edit, SubtitleClock clock)
        : rate_(edit.getFrameRate()), clock_(clock), dropFrame_(edit.getDropFrame()) {
        const EditLabel label = edit.getVideoTimecodeLabel();
        if (label.is_valid()) {
            start_ = label.get_abs_posn();
            dropFrame_ = label.format().dropFrame;
        }
    }

    std::int64_t frameOf(Flicks time) const {
        if (clock_ == SubtitleClock::media)
            return rate_.flicksToFrameNearest(time);
        // Read as the timecode that shows this clock: whole seconds and frames of the label's
        // second.
        const std::int64_t nominal = rate_.nominal();
        const std::int64_t seconds = time / kFlicksPerSecond;
        const std::int64_t frames =
            std::min(rate_.flicksToFrameNearest(time % kFlicksPerSecond), nominal - 1);
        const std::string text =
            format("%02lld:%02lld:%02lld:%02lld", static_cast<long long>(seconds / 3600 % 24),
                   static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60),
                   static_cast<long long>(frames));
        const TimecodeFormat counting{rate_, dropFrame_};
        const auto frame = parseTimecode(text, counting);
        // A label that drop-frame counting leaves out stands for the next one that there is.
        return frame.value_or(rate_.flicksToFrameNearest(time)) - start_;
    }

private:
    const Kv::FrameRate rate_;
    const SubtitleClock clock_;
    bool dropFrame_;
    std::int64_t start_ = 0;
};

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

Laid layOut(const Edit& edit, const SrtFile& file, SubtitleClock clock) {
    const Placer placer(edit, clock);
    const Kv::FrameRate rate = edit.getFrameRate();
    const std::int64_t length = rate.flicksToFrameNearest(toFlicks(edit.getEndTime()));
    const Cookie material = convertCookie(edit.getCookie(), 'T', 0);
    Laid laid;
    for (const SrtCue& cue : file.cues) {
        const std::int64_t from = placer.frameOf(cue.start);
        const std::int64_t to = std::min(std::max(placer.frameOf(cue.end), from + 1), length);
        if (from < 0 || from >= length) {
            ++laid.outside;
            continue;
        }
        const Flicks start = rate.frameToFlicks(from);
        if (!laid.segments.empty() && laid.segments.back().end > start) {
            ++laid.shortened;
            laid.segments.back().end = start;
            if (laid.segments.back().start == start)
                laid.segments.pop_back();
        }
        CelSegment segment;
        segment.start = start;
        segment.end = rate.frameToFlicks(to);
        segment.material = material;
        segment.detail.lines = cue.lines;
        laid.segments.push_back(std::move(segment));
    }
    return laid;
}

} // namespace

Result<SubtitleReport> importSubtitles(const EditModifier& edit, const SrtFile& file,
                                       const LightweightString<wchar_t>& name,
                                       SubtitleClock clock) {
    SrtFile texts = file;
    const unsigned flags = takeFont(texts);
    const Laid laid = layOut(*edit, texts, clock);
    if (laid.segments.empty())
        return Status(StatusCode::failed, toUtf8(edit->getName()),
                      std::string("no subtitle lies inside the edit; do its times count ") +
                          (clock == SubtitleClock::media ? "timecode" : "from the first frame") +
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
