// Keeping what a command has made: saved, and filed in a bin when one was named; all or nothing.
#pragma once

#include "bins/BinData.h"
#include "platform/base/Status.h"
#include "platform/store/SaveAlongside.h"

#include <string>
#include <vector>

namespace cutroom::cli {

// Chosen before anything is made, so that a doubtful name stops the command early.
class Filing {
public:
    // The bin of that cookie, or of that name when it is the only one; a name that no bin has
    // becomes a new bin's, made when there is something to file. Empty: nothing is filed.
    static Result<Filing> into(const std::string& bin);

    // Adds the new edits and logs to the bin and writes them and it as one group. On failure
    // neither they nor a new bin stay.
    Status keep(const CookieVec& made);
    // The same where the new assets are written by somebody else: adds them to the bin and gives
    // its file, for the group in which they are written. Nothing when nothing is to be filed.
    Result<std::vector<FileInProject>> stage(const CookieVec& made);
    // Tells how that went; what was not written is taken out of the bin again.
    Status settle(bool written);
    // Invalid when nothing was filed.
    Cookie bin() const { return bin_ ? bin_->getID() : Cookie(); }

private:
    // The bin, made if need be.
    BinData& openBin();
    // Takes assets out again, and a bin that was made for them.
    Status takeBack(const CookieVec& made);

    Kv::Ptr<BinData> bin_;
    CookieVec staged_;
    bool fresh_ = false;   // made here and not written yet
    std::wstring newName_; // of the bin to be made; empty: none
};

} // namespace cutroom::cli
