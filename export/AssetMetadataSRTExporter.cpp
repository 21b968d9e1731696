#include "export/AssetMetadataSRTExporter.h"

#include "export/CueTimecodes.h"
#include "export/SubtitleText.h"
#include "export/WideText.h"
#include "platform/base/Time.h"
#include "platform/prefs/Configuration.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t kTimecodeLength = 11; // HH:MM:SS:FF

// HH:MM:SS,mmm of a time since the first frame; an earlier one becomes 0, since SubRip has no
// negative times.
void appendMediaTime(std::string& out, double seconds) {
    const long long milliseconds = std::max(0LL, std::llround(seconds * 1000));
    cutroom::appendNumber(out, milliseconds / 3'600'000, 2);
    out += ':';
    cutroom::appendNumber(out, milliseconds / 60'000 % 60, 2);
    out += ':';
    cutroom::appendNumber(out, milliseconds / 1000 % 60, 2);
    out += ',';
    cutroom::appendNumber(out, milliseconds % 1000, 3);
}

struct Tags {
    std::string opening;
    std::string closing;
};

// The closing tags stand in the order of the opening ones.
Tags tagsOf(const SubtitleFont& font) {
    Tags tags;
    if (font.flags & kFontItalic) {
        tags.opening += "<i>";
        tags.closing += "</i>";
    }
    if (font.flags & kFontBold) {
        tags.opening += "<b>";
        tags.closing += "</b>";
    }
    return tags;
}

bool hasTimes(const Cue& cue) {
    return cue.hasEnd() && cutroom::isStorableTime(cue.getTime()) &&
           cutroom::isStorableTime(cue.getEndTime());
}

} // namespace

// Up to two lines, and where they were made. Used again for one cue after the other.
struct AssetMetadataSRTExporter::MarkerText {
    cutroom::SubtitleLine whole;
    std::wstring halves[2];
    std::wstring scratch[2];
    std::wstring_view lines[2];
    int count = 0;
};

class AssetMetadataSRTExporter::Writer {
public:
    Writer(const EditPtr& edit, Clock clock)
        : timecodes_(edit), clock_(clock), resolution_(edit->getCelResolution()),
          start_(clock == Clock::media ? edit->getStartTime() : 0) {}

    void begin(std::size_t number, const TimeRange& range) {
        if (!file_.empty())
            file_ += '\n';
        cutroom::appendNumber(file_, static_cast<std::int64_t>(number));
        file_ += '\n';
        if (clock_ == Clock::timecode) {
            getTimecodeRangeString(file_, timecodes_, resolution_, range);
        } else {
            appendMediaTime(file_, range.getStart() - start_);
            file_ += " --> ";
            appendMediaTime(file_, range.getEnd() - start_);
        }
        file_ += '\n';
    }
    void line(const Tags& tags, std::wstring_view text) {
        file_ += tags.opening;
        cutroom::appendUtf8(file_, text);
        file_ += tags.closing;
        file_ += '\n';
    }
    std::string take() { return std::move(file_); }

private:
    const cutroom::CueTimecodes timecodes_;
    const Clock clock_;
    const double resolution_;
    const double start_;
    std::string file_;
};

AssetMetadataSRTExporter::~AssetMetadataSRTExporter() = default;

LightweightString<wchar_t> AssetMetadataSRTExporter::getFormatName() { return L"SRT"; }

LightweightString<wchar_t> AssetMetadataSRTExporter::getFileExtension() { return L"srt"; }

unsigned AssetMetadataSRTExporter::getSupportedSources() const { return kSourceMarkers; }

void AssetMetadataSRTExporter::getTimecodeString(std::string& out,
                                                 const cutroom::CueTimecodes& edit,
                                                 double resolution, double seconds) {
    const std::size_t begin = out.size();
    edit.append(out, seconds);
    if (out.size() - begin != kTimecodeLength)
        return;
    const int frames = (out.end()[-2] - '0') * 10 + (out.end()[-1] - '0');
    const double milliseconds = frames * resolution * 1000;
    out.resize(begin + 8);
    out += ',';
    cutroom::appendNumber(out, static_cast<int>(milliseconds), 3);
}

void AssetMetadataSRTExporter::getTimecodeRangeString(std::string& out,
                                                      const cutroom::CueTimecodes& edit,
                                                      double resolution, const TimeRange& range) {
    getTimecodeString(out, edit, resolution, range.getStart());
    out += " --> ";
    getTimecodeString(out, edit, resolution, range.getEnd());
}

void AssetMetadataSRTExporter::getMarkerText(const Cue& cue, MarkerText& text) {
    static const auto& splitLength =
        *new cutroom::ConfigValue<int>("srt_split_length", 35); // never destroyed
    const std::wstring_view whole = text.whole.of(cue.getDescription(), cue.getName());
    text.count = whole.empty() ? 0 : 1;
    text.lines[0] = whole;
    const int limit = splitLength.get();
    if (limit != 0 && static_cast<long long>(whole.size()) > limit &&
        cutroom::splitInHalf(whole, text.halves[0], text.halves[1])) {
        text.lines[0] = text.halves[0];
        text.lines[1] = text.halves[1];
        text.count = text.lines[1].empty() ? 1 : 2;
    }
    for (int i = 0; i < text.count; ++i)
        text.lines[i] = cutroom::withoutTimes(text.lines[i], text.scratch[i]);
}

std::optional<std::string> AssetMetadataSRTExporter::getText(const EditPtr& edit,
                                                             const std::vector<Cue>& cues) const {
    if (!edit || cues.empty())
        return std::nullopt;
    Writer file(edit, clock_);
    const Tags untagged;
    MarkerText text;
    for (std::size_t i = 0; i < cues.size(); ++i) {
        if (!hasTimes(cues[i]))
            continue;
        getMarkerText(cues[i], text);
        if (text.count == 0)
            continue;
        file.begin(i + 1, cues[i].getRange());
        for (int line = 0; line < text.count; ++line)
            file.line(untagged, text.lines[line]);
    }
    return file.take();
}

std::optional<std::string> AssetMetadataSRTExporter::getText(const EditPtr& edit,
                                                             const IdStamp& channel, Clock clock) {
    if (!edit)
        return std::nullopt;
    const Edit::Lock lock(*edit);
    if (!edit->isValidChan(channel) || edit->getChanType(channel) != kChanSubtitle)
        return std::nullopt;
    const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
    const Tags tags = tagsOf(edit->getSubtitleFont(channel));
    Writer file(edit, clock);
    cutroom::SubtitleLine line;
    std::wstring scratch;
    std::size_t number = 0;
    for (std::uint32_t i = 0; i < cel->numSegments(); ++i) {
        const CelSegment segment = cel->getSegment(i);
        if (!segment.material.valid())
            continue;
        file.begin(++number, {cutroom::toSeconds(segment.start), cutroom::toSeconds(segment.end)});
        for (const auto& own : segment.detail.lines)
            if (const std::wstring_view text = line.of(own); !text.empty())
                file.line(tags, cutroom::withoutTimes(text, scratch));
    }
    return number == 0 ? std::nullopt : std::optional(file.take());
}

bool AssetMetadataSRTExporter::exportToFile(const EditPtr& edit, const IdStamp& channel,
                                            const LightweightString<wchar_t>& path) {
    return save(path, getText(edit, channel, Clock::timecode));
}
