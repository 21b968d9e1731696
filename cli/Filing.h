// Keeping what a command has made: saved, and filed in a bin when one was named; all or nothing.
#pragma once

#include "bins/BinData.h"
#include "platform/base/Status.h"

#include <string>

namespace cutroom::cli {

// Chosen before anything is made, so that a doubtful name stops the command early.
class Filing {
public:
    // The bin of that cookie, or of that name when it is the only one; a name that no bin has
    // becomes a new bin's, made when there is something to file. Empty: nothing is filed.
    static Result<Filing> into(const std::string& bin);

    // Writes the new edits and logs to the disk as one group, then adds them to the bin and writes
    // that. On failure neither they nor a new bin stay.
    Status keep(const CookieVec& made);
    // Invalid when nothing was filed.
    Cookie bin() const { return bin_ ? bin_->getID() : Cookie(); }

private:
    Kv::Ptr<BinData> bin_;
    std::wstring newName_; // of the bin to be made; empty: none
};

} // namespace cutroom::cli
