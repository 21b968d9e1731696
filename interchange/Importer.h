// Takes timeline files into the open project: edits, the logs of their sources, markers, labels.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/FrameRate.h"
#include "platform/base/Status.h"
#include "platform/base/Strings.h"
#include "platform/store/SaveAlongside.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace cutroom {

struct ImportReport;

struct ImportOptions {
    // Rate of an edit list, which does not state it; nothing: worked out from its lengths.
    std::optional<Kv::FrameRate> rate;
    // Told how far the import of one file has come, 0 to 1; may be empty.
    std::function<void(double)> progress;
    // Called when all of a file is made, before anything is written. Gives other files to be
    // written in the same group, such as a bin that holds what was made, so that neither is there
    // without the other. A failure ends the import. When the import fails later, those files may
    // have been written already; the caller then puts them right. May be empty.
    std::function<Result<std::vector<FileInProject>>(const ImportReport&)> alongside;
};

// What the import of one file made.
struct ImportReport {
    struct Made {
        Cookie edit;
        LightweightString<wchar_t> name;
    };
    std::vector<Made> edits;           // in the order of the file
    std::vector<Made> nested;          // made for what is nested in them, the innermost first
    std::size_t logs = 0;              // new ones; sources that the project has are used again
    CookieVec newLogs;                 // these
    std::vector<std::string> warnings; // what could not be represented, or was assumed
};

// Imports the file at `path`, whose kind its contents tell (OTIO JSON or an edit list). One edit
// for each timeline or playable root and for each nested one, which its parent plays as a clip; one
// log (type 1) for each distinct source, unless the project has one of that medium, reel, location
// and name with the channels that are needed. All is filed in the open project and written as one
// group: on failure, and after a crash, nothing of the file is there. The strip time of clips is
// media time, as in the file. User-interface thread.
CUTROOM_API Result<ImportReport> importFile(const std::string& path,
                                            const ImportOptions& options = {});

} // namespace cutroom
