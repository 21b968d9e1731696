#include "interchange/MarkerFile.h"

#include "export/MarkerFields.h"
#include "interchange/MarkerReaders.h"
#include "interchange/Timeline.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/store/Edit.h"

#include <algorithm>

namespace cutroom {

namespace {

constexpr std::size_t kMostWarnings = 100;

void warn(std::vector<std::string>& warnings, long line, const std::string& text) {
    if (warnings.size() < kMostWarnings)
        warnings.push_back((line > 0 ? "line " + std::to_string(line) + ": " : "") + text);
}

// Where the marker ends: nowhere, or at a place not before its start.
Result<double> endOf(const MarkerTexts& texts, double start, const MarkerPlaces& places) {
    if (!texts.out || trim(*texts.out).empty()) {
        if (!texts.duration || trim(*texts.duration).empty())
            return kNoTime;
        const auto frames = parseTimecode(trim(*texts.duration), {places.format().rate, false});
        if (!frames)
            return Status(StatusCode::damaged, {}, '"' + *texts.duration + "\" is no duration");
        return *frames == 0 ? kNoTime : places.framesOn(start, *frames);
    }
    auto end = places.ofTimecode(*texts.out);
    if (end.ok() && *end < start)
        return Status(StatusCode::damaged, {},
                      "the marker would end (" + *texts.out + ") before it begins (" + *texts.in +
                          ')');
    if (end.ok() && texts.pointsEnd && *end == start)
        return kNoTime;
    return end;
}

} // namespace

std::optional<MarkerFormat> markerFormatOf(const std::string& path) {
    static constexpr std::pair<const char*, MarkerFormat> kExtensions[] = {
        {"csv", MarkerFormat::csv}, {"tsv", MarkerFormat::csv}, {"json", MarkerFormat::json},
        {"srt", MarkerFormat::srt}, {"edl", MarkerFormat::edl},
    };
    const std::string extension = extensionOf(path);
    for (const auto& [name, format] : kExtensions)
        if (equalNoCase(extension, name))
            return format;
    return std::nullopt;
}

MarkerTarget markerTarget(const EditPtr& edit, MarkerClock clock) {
    return {MarkerPlaces(edit, clock), edit->getCookie().asString(), toUtf8(edit->getName())};
}

Result<MarkerRead> markerOf(const MarkerTexts& texts, long line, const MarkerTarget& target,
                            std::vector<std::string>& warnings) {
    if (!texts.in || trim(*texts.in).empty())
        return Status(StatusCode::damaged, {}, "the marker has no place");
    const auto start = target.places.ofTimecode(*texts.in);
    if (!start)
        return start.status();
    const auto end = endOf(texts, *start, target.places);
    if (!end)
        return end.status();
    MarkerRead read;
    read.line = line;
    read.cue.setTime(*start);
    read.cue.setEndTime(*end);
    read.saidEnd = texts.out || texts.duration;
    read.saidName = true;
    read.cue.setName(toWide(texts.name.value_or("")));
    read.saidDescription = texts.description.has_value();
    read.cue.setDescription(toWide(texts.description.value_or("")));
    const std::string colour(trim(texts.colour.value_or("")));
    if (const auto value = markerColour(colour)) {
        read.saidColour = true;
        read.cue.setColour(*value);
    } else if (!colour.empty()) {
        warn(warnings, line, "\"" + colour + "\" is no known colour");
    }
    for (const auto& [key, value] : texts.fields) {
        read.fields.push_back(key);
        read.cue.setCustomMetadata(key, toWide(value));
    }
    return read;
}

std::map<std::string, std::string> markerFieldKeys() {
    std::map<std::string, std::string> keys;
    for (const MarkerField& field : markerFields())
        keys.emplace(field.name, field.key);
    return keys;
}

Result<MarkerFile> readMarkers(std::string_view text, const std::string& file, MarkerFormat format,
                               const MarkerTarget& target) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    const auto read = [&] {
        switch (format) {
        case MarkerFormat::csv:
            return readCsvMarkers(text, file, target);
        case MarkerFormat::json:
            return readJsonMarkers(text, file, target);
        case MarkerFormat::srt:
            return readSrtMarkers(text, file, target);
        case MarkerFormat::edl:
            break;
        }
        return readEdlMarkers(text, file, target);
    };
    auto markers = read();
    if (markers.ok() && markers->markers.empty())
        return Status(StatusCode::damaged, file, "holds no marker");
    if (!markers.ok() || std::any_of(markers->markers.begin(), markers->markers.end(),
                                     [&](const MarkerRead& marker) {
                                         return !target.places.isBehind(marker.cue.getTime());
                                     }))
        return markers;
    return Status(StatusCode::damaged, file, "no marker of it lies inside the edit",
                  markers->markers.front().line);
}

} // namespace cutroom
