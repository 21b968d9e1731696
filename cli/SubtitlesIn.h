// Subtitle files on their way into an edit.
#pragma once

#include "interchange/SubtitleImport.h"
#include "platform/base/Status.h"
#include "platform/store/EditPtr.h"

#include <string>

namespace cutroom::cli {

struct SubtitleWords {
    std::string file;
    std::string encoding; // as iconv names it; empty: UTF-8, or UTF-16 with a byte order mark
    MarkerClock clock = MarkerClock::media;
};

// A text file as UTF-8; `encoding` is as in `SubtitleWords`.
Result<std::string> readText(const std::string& file, const std::string& encoding);

// Reads the file and lays it on a new channel of the edit, as one step of undo.
Result<SubtitleReport> addSubtitles(const SubtitleWords& words, const EditPtr& edit);

} // namespace cutroom::cli
