// Reads SubRip subtitles (.srt) as players read them: numbers do not matter, order does not, and
// an empty line ends a subtitle.
//
//     1                                   number (may be missing, repeated, out of order)
//     00:00:01,000 --> 00:00:02,480      hours of one digit or more; a point for the comma
//     first line
//     second line
//                                         empty line
#pragma once

#include "platform/base/Status.h"
#include "platform/base/Strings.h"
#include "platform/base/Time.h"

#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// One subtitle: times from the start of what is played, the end exclusive.
struct SrtCue {
    Flicks start = 0;
    Flicks end = 0;
    std::vector<LightweightString<wchar_t>> lines; // with their tags; first and last not empty
    long line = 0;                                 // where its time line stands in the file

    friend bool operator==(const SrtCue&, const SrtCue&) = default;
};

struct SrtFile {
    std::vector<SrtCue> cues; // by start; those of one start in the order of the file
    std::vector<std::string> warnings;
};

// Reads `text` (UTF-8, a byte order mark allowed, line ends of any kind); `file` names it in
// messages. A subtitle without text, or that does not end after its start, is left out with a
// warning. Fails as `damaged`, naming the line, for text that is not UTF-8 and where no subtitle
// stands.
CUTROOM_API Result<SrtFile> readSrt(std::string_view text, const std::string& file);

} // namespace cutroom
