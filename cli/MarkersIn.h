// Marker files on their way into an edit.
#pragma once

#include "interchange/MarkerImport.h"
#include "platform/base/Status.h"

#include <string>

namespace cutroom::cli {

struct MarkersInWords {
    std::string file;
    std::string format;   // empty: by the file's extension
    std::string encoding; // as iconv names it; empty: UTF-8, or UTF-16 with a byte order mark
    std::string conflict; // keep (also empty), replace, both
    std::string clock;    // of subtitles: timecode (also empty), media
};

struct MarkersInReport {
    MarkerPlan plan;
    std::vector<std::string> warnings;
};

// Reads the whole file, then changes the edit in one step of undo, or not at all.
Result<MarkersInReport> addMarkers(const MarkersInWords& words, const EditPtr& edit);
// "2 added, 1 replaced, 3 kept".
std::string textOf(const MarkerPlan& plan);

} // namespace cutroom::cli
