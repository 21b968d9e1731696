// `projdb::Search`: a search of the project database in steps, so that what is found first is known
// soon and the rest can be given up.
//
// Free text, and attribute patterns that need a text to occur, are looked for in a lower-cased copy
// of all texts in memory: made a page at a time by the first search, kept in step with every
// change, and given up when it needs more than the configuration's "search_text_megabytes" (1024);
// then the records are read from the file each time. `matchRecord` decides either way.
#pragma once

#include "platform/base/Export.h"
#include "platform/project/ProjDbRecord.h"
#include "platform/project/SearchCriteria.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace projdb {

// One that was found. The number rises in the order in which records were inserted and stays with
// a record.
struct Hit {
    std::int64_t number;
    Summary summary;
};

// One thread at a time; takes the database's lock for the length of a step.
class CUTROOM_API Search {
public:
    explicit Search(const SearchCriteria& criteria);
    ~Search();
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    // Looks at some records more and appends those that match; a record that was changed meanwhile
    // may come twice and out of order. False when all have been looked at.
    bool next(std::vector<Hit>& found);
    // How much has been looked at, 0 to 1.
    double share() const noexcept;
    // The records could not be read to the end (logged); what was found is not all.
    bool failed() const noexcept;
    // Records were changed or removed since the start: what was found may match no more.
    bool disturbed() const noexcept;

    struct State;

private:
    const std::unique_ptr<State> state_;
};

// Puts hits in the order of insertion, each once.
CUTROOM_API void putInOrder(std::vector<Hit>& hits);

} // namespace projdb
