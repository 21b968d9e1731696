// Verifying and mending the files of bins, groups, documents and filters.
#pragma once

#include "platform/base/Status.h"

#include <cstddef>
#include <vector>

namespace cutroom::cli {

struct ContainerCounts {
    std::size_t bins = 0;
    std::size_t groups = 0;
    std::size_t documents = 0;
    std::size_t filters = 0;
};

// Reads every file; gives what is wrong with each that is not sound. Writes nothing.
std::vector<Status> checkContainers(ContainerCounts* counts);
// Moves what cannot be read aside and puts the version before it in its place; documents and bins
// are read anew, which also rebuilds the bins cache. Gives what stays lost.
std::vector<Status> restoreContainers();

} // namespace cutroom::cli
