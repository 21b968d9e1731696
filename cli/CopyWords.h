// The words that say what of an edit is copied.
#pragma once

#include "cli/Filing.h"
#include "platform/base/Status.h"
#include "platform/store/EditModule.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cutroom::cli {

struct CopyWords {
    std::string edit;
    std::optional<std::string> in;
    std::optional<std::string> out;
    bool marked = false;
    std::vector<std::string> tracks;
    std::optional<std::string> name;
    std::string bin;

    bool ranged() const { return in || out || marked; }
};

// Declares the edit, the tracks, the name and the bin; with `ranges` also the places.
enum class CopyRanges { offered, none };
void declareCopyWords(CLI::App& command, CopyWords& words, CopyRanges ranges);

// The edit with the range that the words mark, on its frames, and the tracks that they select (all
// without any). Fails for places outside the edit, a range without length, and unknown tracks.
Result<EditModule> readCopyWords(const CopyWords& words, const EditPtr& edit);

// The start of the frame of the edit that shows a place, as it is listed. What is no time stays.
double shownAt(double seconds, const EditPtr& edit);

// Keeps a copy with its name, its parent and its bin, and prints it: as JSON, else cookie and name.
Status keepCopy(const CopyWords& words, Filing& filing, EditModifier copy, const EditPtr& source,
                bool json);

} // namespace cutroom::cli
