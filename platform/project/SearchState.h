// What a search of the project database remembers from step to step. Internal to this folder.
#pragma once

#include "platform/project/ProjDbSearch.h"
#include "platform/project/TextArena.h"

#include <cstddef>
#include <cstdint>
#include <string>

struct projdb::Search::State {
    // How the records are searched.
    enum class Way {
        kinds, // by the summaries in memory
        texts, // by the texts in memory
        rows,  // by reading every record from the file
    };

    explicit State(const SearchCriteria& wanted);

    const SearchCriteria criteria;
    Way way = Way::rows;
    std::string pattern; // lower-cased; for `texts`
    bool wholeWords = false;
    bool readsHits = false; // records that hold the pattern are read and compared with the criteria
    std::size_t mostTextBytes = 0;

    bool started = false;
    bool done = false;
    bool disturbed = false;
    bool failed = false;
    double share = 0;
    std::uint64_t revision = 0;   // of the records, at the start
    std::uint64_t generation = 0; // of the texts, at the last step
    std::size_t place = 0;        // in the texts, or the next slot
    std::int64_t after = 0;       // number of the last row that was looked at
};
