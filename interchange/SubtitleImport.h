// Lays subtitles on a subtitle channel of an edit.
#pragma once

#include "interchange/MarkerPlaces.h"
#include "interchange/SrtReader.h"
#include "platform/base/IdStamp.h"
#include "platform/base/Status.h"
#include "platform/base/Strings.h"
#include "platform/store/EditPtr.h"

#include <string>
#include <vector>

namespace cutroom {

struct SubtitleReport {
    IdStamp channel;
    std::size_t count = 0;
    std::vector<std::string> warnings;
};

// Adds a subtitle channel called `name` with these subtitles, moved to the edit's frames. One that
// overlaps the next is cut short where that begins; what lies outside the edit is left out, both
// with a warning. A tag that stands round every line (<i>, <b>) becomes the channel's font. Fails,
// with the edit unchanged, when nothing lies inside the edit, and without edit.
CUTROOM_API Result<SubtitleReport> importSubtitles(const EditModifier& edit, const SrtFile& file,
                                                   const LightweightString<wchar_t>& name,
                                                   MarkerClock clock);

} // namespace cutroom
