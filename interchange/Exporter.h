// Writes edits of the store as timeline files: OpenTimelineIO JSON and CMX 3600 edit lists.
#pragma once

#include "platform/base/Status.h"
#include "platform/store/EditPtr.h"

#include <string>
#include <vector>

namespace cutroom {

struct ExportedFile {
    std::string text;                  // the whole file, UTF-8
    std::vector<std::string> warnings; // what it cannot say as the edit has it; each once
};

// The edit as OTIO, with all edits nested in it; see interchange/OtioWriter.h. An edit that was
// imported comes out as it came in save for what has changed since. Fails without edit, when one
// is nested in itself, and when one cannot be opened. Takes the locks of edits one at a time and
// changes nothing; not while holding an edit's lock.
CUTROOM_API Result<ExportedFile> exportOtio(const EditPtr& edit);

// The edit as an edit list; see interchange/EdlWriter.h. `track`, as shown or by its name, chooses
// the picture track, or one sound track alone; empty: the only picture track with all sound.
// Fails without edit, when there is nothing to list, the rate has no timecode of two digits, or
// there are several picture tracks and none is chosen. Locks as above.
CUTROOM_API Result<ExportedFile> exportEdl(const EditPtr& edit, const std::string& track = {});

} // namespace cutroom
