// Markers in subtitles, of which each becomes one, and in edit lists: LOC comments, tables of
// markers, events that are markers.
#include "interchange/EdlComments.h"
#include "interchange/MarkerReaders.h"
#include "interchange/SrtReader.h"
#include "interchange/Timeline.h"
#include "platform/base/Strings.h"

#include <set>

namespace cutroom {

namespace {

std::wstring oneLine(const std::vector<LightweightString<wchar_t>>& lines) {
    std::wstring text;
    for (const auto& line : lines)
        text += (text.empty() ? L"" : L" ") + line;
    return text;
}

// "01:02:03:04" as the list has it, with the mark of drop frame.
std::string textOf(const EdlLabel& label, bool dropList) {
    const char separator = label.drop || dropList ? ';' : ':';
    return format("%02d:%02d:%02d%c%02d", label.hours, label.minutes, label.seconds, separator,
                  label.frames);
}

// Lines that begin as a marker and name no place.
long firstBadLocator(const std::vector<std::string>& lines, const std::set<long>& read) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::string_view line = trim(lines[i]);
        if (!line.starts_with('*'))
            continue;
        line = trim(line.substr(1));
        const auto number = static_cast<long>(i) + 1;
        if (line.starts_with("LOC:") && read.count(number) == 0)
            return number;
    }
    return 0;
}

} // namespace

Result<MarkerFile> readSrtMarkers(std::string_view text, const std::string& file,
                                  const MarkerTarget& target) {
    const auto subtitles = readSrt(text, file);
    if (!subtitles)
        return subtitles.status();
    MarkerFile markers;
    markers.warnings = subtitles->warnings;
    for (const SrtCue& cue : subtitles->cues) {
        const auto start = target.places.ofClock(cue.start);
        const auto end = target.places.ofClock(cue.end);
        for (const auto* place : {&start, &end})
            if (!place->ok())
                return Status(StatusCode::damaged, file, place->status().message(), cue.line);
        MarkerRead read;
        read.line = cue.line;
        read.saidEnd = true;
        read.cue.setTime(*start);
        read.cue.setEndTime(*end);
        read.cue.setName(oneLine(cue.lines));
        markers.markers.push_back(std::move(read));
    }
    return markers;
}

Result<MarkerFile> readEdlMarkers(std::string_view text, const std::string& file,
                                  const MarkerTarget& target) {
    MarkerFile markers;
    bool latin1 = false;
    const std::vector<std::string> lines = edlLines(text, &latin1);
    const EdlList list = parseEdlLines(lines);
    if (latin1)
        markers.warnings.push_back(
            "the text is not UTF-8; names were read byte by byte as Latin-1");
    std::set<long> read;
    for (const EdlMarker& marker : list.markers) {
        const auto failed = [&](const Status& why) {
            return Status(StatusCode::damaged, file, why.message(), marker.line);
        };
        read.insert(marker.line);
        MarkerTexts texts;
        texts.in = textOf(marker.at, list.recordDrop.value_or(false));
        texts.name = marker.name;
        texts.description = marker.text;
        texts.colour = marker.colour;
        auto one = markerOf(texts, marker.line, target, markers.warnings);
        if (!one)
            return failed(one.status());
        if (marker.frames > 0)
            one->cue.setEndTime(target.places.framesOn(one->cue.getTime(), marker.frames));
        one->saidEnd = marker.frames > 0;
        markers.markers.push_back(std::move(*one));
    }
    if (const long bad = firstBadLocator(lines, read))
        return Status(StatusCode::damaged, file, "LOC without a timecode", bad);
    return markers;
}

} // namespace cutroom
