// Reads lists of markers: comma-separated tables, JSON, SubRip subtitles, edit lists
// (docs/formats/marker-lists.md). What the metadata exporters write is read back.
#pragma once

#include "interchange/MarkerPlaces.h"
#include "platform/base/Status.h"
#include "platform/store/Cue.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

enum class MarkerFormat { csv, json, srt, edl };

// The format that the extension of a file names.
CUTROOM_API std::optional<MarkerFormat> markerFormatOf(const std::string& path);

// One marker of a file at its place on the edit, and what the file said of it beside the place.
struct MarkerRead {
    Cue cue;               // with a fresh identity
    long line = 0;         // in the file; in JSON known for the first marker only
    bool saidName = false; // otherwise the name is the text that the marker shows
    bool saidDescription = false;
    bool saidEnd = false; // true also when the file says that it has no end
    bool saidColour = false;
    std::vector<std::string> fields; // keys of the custom fields that the file has
};

struct MarkerFile {
    std::vector<MarkerRead> markers; // in the order of the file
    std::vector<std::string> warnings;
};

// What the file is read for.
struct MarkerTarget {
    MarkerPlaces places;
    std::string cookie; // of the edit, and its name: which of a file's assets is meant
    std::string name;
};
// `edit` must be there.
CUTROOM_API MarkerTarget markerTarget(const EditPtr& edit, MarkerClock clock);

// Reads `text` (UTF-8, a byte order mark allowed); `file` names it in messages. Fails as `damaged`,
// naming the line, when the file is not of the format, names a place that the edit does not have,
// or holds no marker; never reads a part.
CUTROOM_API Result<MarkerFile> readMarkers(std::string_view text, const std::string& file,
                                           MarkerFormat format, const MarkerTarget& target);

} // namespace cutroom
