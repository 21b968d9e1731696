// The summaries of a project's bins: from the bins cache where it can be trusted, else from the
// bins' files. Nothing here writes, and no bin is made.
#pragma once

#include "bins/BinSummary.h"
#include "platform/base/Status.h"

#include <string>

namespace cutroom {

// The bins cache file of the open project, and its name below the project's folder. Empty without a
// project.
CUTROOM_API std::string binsCachePath();
std::string binsCacheName();

// Reads a cache file (docs/formats/bins-cache.md). A cache of another version than 6 is refused as
// a whole; fields that it lacks keep their defaults.
Result<BinSummaries> readBinsCache(const std::string& path);
// The whole file for those summaries.
CUTROOM_API std::string binsCacheBytes(const BinSummaries& summaries);

// What a bin's file says of it: counts and children as the bin would have them once it is loaded.
Result<BinSummary> readBinSummary(const std::string& path, const Cookie& bin);

// The bins of the open project.
struct FoundBins {
    BinSummaries summaries;
    bool cacheIsCurrent = true; // the cache file says the same
};
// Looks at every bin file of the project: those that the cache knows and that are older than it are
// taken from the cache, all others are read. So bins that were added, replaced or removed while
// nobody watched are noticed. A bin that cannot be read has what the cache said of it, or its
// cookie alone; that, and a cache that cannot be used, is logged.
FoundBins findBins();

} // namespace cutroom
