// The formats of `cutroom export`. A further format is a row of the table in ExportCommand.cpp and
// a writer declared here.
#pragma once

#include "bins/BinData.h"
#include "platform/base/Status.h"
#include "platform/store/EditPtr.h"

#include <string>

namespace cutroom::cli {

// The words of one call; what was not said is empty.
struct ExportWords {
    std::string asset; // name or cookie
    std::string format;
    std::string output;
    std::string track; // one track instead of the whole
    std::string clock;
    std::string pointDuration; // frames, or "next"; empty: points have no end
    bool spreadsheet = false;
};

// Which of the words a format looks at (bits); the others are refused.
enum ExportOptions : unsigned {
    kTakesTrack = 1,
    kTakesClock = 2,
    kTakesPointDuration = 4,
    kTakesSpreadsheet = 8,
};

// What is exported: one of the two.
struct ExportSource {
    EditPtr edit;
    Kv::Ptr<BinData> bin;
};

// Makes the whole text of the file; fails with a reason for the user.
using ExportWriter = Result<std::string> (*)(const ExportWords& words, const ExportSource& source);

struct ExportFormat {
    const char* name;
    const char* help;
    unsigned assets;  // the AssetKinds it takes: kEdits, kBins
    unsigned options; // ExportOptions
    ExportWriter write;
};

Result<std::string> writeSrt(const ExportWords& words, const ExportSource& source);
Result<std::string> writeSubtitles(const ExportWords& words, const ExportSource& source);
Result<std::string> writeJson(const ExportWords& words, const ExportSource& source);
Result<std::string> writeXml(const ExportWords& words, const ExportSource& source);
Result<std::string> writeOtioEdit(const ExportWords& words, const ExportSource& source);
Result<std::string> writeEdlEdit(const ExportWords& words, const ExportSource& source);
Result<std::string> writeCsv(const ExportWords& words, const ExportSource& source);

} // namespace cutroom::cli
