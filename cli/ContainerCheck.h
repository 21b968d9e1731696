// Verifying and mending the files of bins, groups, documents and filters.
#pragma once

#include "platform/base/Status.h"

#include <cstddef>
#include <string>
#include <vector>

namespace cutroom::cli {

struct ContainerCounts {
    std::size_t bins = 0;
    std::size_t groups = 0;
    std::size_t documents = 0;
    std::size_t filters = 0;
};

// Puts "<path>.bak", which the caller has found sound, in the place of a damaged file and says so.
// The damaged one keeps its place until then, so that a repair that is cut short or finds the disk
// full is begun anew by the next, and has the name "<path>.damaged" afterwards.
Status putBackupInPlace(const std::string& path, const Status& damage);

// Reads every file; gives what is wrong with each that is not sound. Writes nothing.
std::vector<Status> checkContainers(ContainerCounts* counts);
// Puts the version before in the place of what cannot be read, or moves it aside; documents and
// bins are read anew, and the bins cache is made anew from the bins. Gives what stays lost.
std::vector<Status> restoreContainers();

} // namespace cutroom::cli
