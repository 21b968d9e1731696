#include "export/AssetMetadataSRTExporter.h"

#include "platform/files/Files.h"
#include "platform/prefs/Configuration.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t kTimecodeLength = 11; // HH:MM:SS:FF

// A line break inside a text would end the subtitle, so every run of white space becomes a blank.
LightweightString<wchar_t> onOneLine(const LightweightString<wchar_t>& text) {
    LightweightString<wchar_t> line;
    bool pending = false;
    for (const wchar_t c : text) {
        const bool breaks =
            c < L' ' || c == L'\x7F' || c == L'\x85' || c == L'\u2028' || c == L'\u2029';
        if (breaks) {
            pending = !line.empty();
            continue;
        }
        if (pending && c != L' ' && line.back() != L' ')
            line += L' ';
        pending = false;
        line += c;
    }
    return line;
}

std::vector<LightweightString<wchar_t>> wordsOf(const LightweightString<wchar_t>& text) {
    std::vector<LightweightString<wchar_t>> words(1);
    for (const wchar_t c : text)
        if (c != L' ')
            words.back() += c;
        else if (!words.back().empty())
            words.emplace_back();
    if (words.back().empty())
        words.pop_back();
    return words;
}

// The first words until they fill half of the text's length, and the rest.
std::pair<LightweightString<wchar_t>, LightweightString<wchar_t>>
splitInHalf(const std::vector<LightweightString<wchar_t>>& words, std::size_t length) {
    std::pair<LightweightString<wchar_t>, LightweightString<wchar_t>> lines;
    for (const auto& word : words) {
        auto& line = lines.first.size() < length / 2 ? lines.first : lines.second;
        line += (line.empty() ? L"" : L" ") + word;
    }
    return lines;
}

// One subtitle: number, time line, texts, with an empty line before all but the first.
void appendSubtitle(std::string& file, std::size_t number, const std::string& times,
                    const LightweightVector<LightweightString<char>>& lines) {
    if (!file.empty())
        file += '\n';
    file += std::to_string(number) + '\n' + times + '\n';
    for (const auto& line : lines)
        file += line + '\n';
}

// What is exported is the user's to keep: no copy of an older file stays beside it.
bool saveTo(const LightweightString<wchar_t>& path, const std::string& file) {
    return cutroom::writeOutput(cutroom::toUtf8(path), file).ok();
}

// HH:MM:SS,mmm of a time since the first frame; SubRip knows none before it.
LightweightString<char> mediaTime(double seconds) {
    const long long milliseconds = std::max(0LL, std::llround(seconds * 1000));
    return cutroom::format("%02lld:%02lld:%02lld,%03lld", milliseconds / 3'600'000,
                           milliseconds / 60'000 % 60, milliseconds / 1000 % 60,
                           milliseconds % 1000);
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

} // namespace

AssetMetadataSRTExporter::~AssetMetadataSRTExporter() = default;

LightweightString<wchar_t> AssetMetadataSRTExporter::getFormatName() { return L"SRT"; }

LightweightString<wchar_t> AssetMetadataSRTExporter::getFileExtension() { return L"srt"; }

unsigned AssetMetadataSRTExporter::getSupportedSources() const { return kSourceMarkers; }

LightweightString<char> AssetMetadataSRTExporter::getTimecodeString(const EditPtr& edit,
                                                                    double seconds) {
    const auto timecode = getCueTimecode(edit, seconds);
    if (timecode.size() != kTimecodeLength)
        return timecode;
    const int frames = cutroom::leadingInt(timecode.substr(kTimecodeLength - 2));
    const double milliseconds = frames * edit->getCelResolution() * 1000;
    return timecode.substr(0, 8) + cutroom::format(",%03d", static_cast<int>(milliseconds));
}

LightweightString<char> AssetMetadataSRTExporter::getTimecodeRangeString(const EditPtr& edit,
                                                                         const TimeRange& range) {
    return getTimecodeString(edit, range.getStart()) + " --> " +
           getTimecodeString(edit, range.getEnd());
}

LightweightString<char> AssetMetadataSRTExporter::getTimeLine(const EditPtr& edit,
                                                              const TimeRange& range, Clock clock) {
    if (clock == Clock::timecode)
        return getTimecodeRangeString(edit, range);
    const double start = edit->getStartTime();
    return mediaTime(range.getStart() - start) + " --> " + mediaTime(range.getEnd() - start);
}

LightweightVector<LightweightString<char>> AssetMetadataSRTExporter::getMarkerText(const Cue& cue) {
    static const cutroom::ConfigValue<int> splitLength("srt_split_length", 35);
    const auto text =
        onOneLine(cue.getDescription().empty() ? cue.getName() : cue.getDescription());
    const int limit = splitLength.get();
    if (limit == 0 || text.empty() || static_cast<long long>(text.size()) <= limit)
        return {cutroom::toUtf8(text)};
    const auto words = wordsOf(text);
    if (words.size() < 2)
        return {cutroom::toUtf8(text)};
    const auto [first, second] = splitInHalf(words, text.size());
    if (second.empty())
        return {cutroom::toUtf8(first)};
    return {cutroom::toUtf8(first), cutroom::toUtf8(second)};
}

bool AssetMetadataSRTExporter::exportToFile(const EditPtr& edit, const std::vector<Cue>& cues,
                                            const LightweightString<wchar_t>& path) const {
    if (!edit || cues.empty())
        return false;
    std::string file;
    for (std::size_t i = 0; i < cues.size(); ++i) {
        const Cue& cue = cues[i];
        if (!cue.hasEnd() || (cue.getName().empty() && cue.getDescription().empty()))
            continue;
        appendSubtitle(file, i + 1, getTimeLine(edit, cue.getRange(), clock_), getMarkerText(cue));
    }
    return saveTo(path, file);
}

LightweightString<char>
AssetMetadataSRTExporter::getSubtitles(const EditPtr& edit, const IdStamp& channel, Clock clock) {
    const Edit::Lock lock(*edit);
    if (!edit->isValidChan(channel) || edit->getChanType(channel) != kChanSubtitle)
        return {};
    const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
    const Tags tags = tagsOf(edit->getSubtitleFont(channel));
    std::string file;
    std::size_t number = 0;
    for (std::uint32_t i = 0; i < cel->numSegments(); ++i) {
        const CelSegment segment = cel->getSegment(i);
        if (!segment.material.valid())
            continue;
        LightweightVector<LightweightString<char>> lines;
        for (const auto& line : segment.detail.lines)
            if (!line.empty())
                lines.push_back(tags.opening + cutroom::toUtf8(onOneLine(line)) + tags.closing);
        const TimeRange range(cutroom::toSeconds(segment.start), cutroom::toSeconds(segment.end));
        appendSubtitle(file, ++number, getTimeLine(edit, range, clock), lines);
    }
    return file;
}

bool AssetMetadataSRTExporter::exportToFile(const EditPtr& edit, const IdStamp& channel,
                                            const LightweightString<wchar_t>& path) {
    return exportToFile(edit, channel, path, Clock::timecode);
}

bool AssetMetadataSRTExporter::exportToFile(const EditPtr& edit, const IdStamp& channel,
                                            const LightweightString<wchar_t>& path, Clock clock) {
    const std::string file = edit ? getSubtitles(edit, channel, clock) : std::string();
    return !file.empty() && saveTo(path, file);
}
