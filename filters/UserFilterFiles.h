// `cutroom::UserFilterFiles`: the files of the user's filters, groups/Filters/<cookie>.filter.
#pragma once

#include "bins/DescriptionFiles.h"
#include "filters/UserFilter.h"

#include <vector>

namespace cutroom {

// Belongs to the filters' manager, which calls it under the lock over its files. What is damaged is
// logged, remembered, and moved aside before it would be written over.
class UserFilterFiles {
public:
    using FilterPtr = Kv::Ptr<UserFilter>;

    UserFilterFiles();

    // The cookies of the filters that there are files of, in the order of the files' names.
    Result<CookieVec> list();
    // The filter of that cookie; without results and name when its file cannot be read.
    FilterPtr read(const Cookie& id);
    // Writes filters as one group, all or none; they count as saved then.
    Status write(const std::vector<FilterPtr>& filters);
    // Removes a filter's file (it stays as ".bak").
    Status remove(const Cookie& id);

    // What is wrong with the damaged files.
    std::vector<Status> damaged() const { return files_.damaged(); }
    void reset() { files_.reset(); }

private:
    DescriptionFiles files_;
};

} // namespace cutroom
