// What a search of the project database remembers from step to step. Internal to this folder.
#pragma once

#include "platform/project/ProjDbSearch.h"
#include "platform/project/TextArena.h"

#include <cstddef>
#include <cstdint>
#include <string>

struct projdb::Search::State {
    // What is looked through.
    enum class Way {
        kinds, // what is in memory of each record decides
        texts, // the texts in memory
        rows,  // every record of the file
    };

    explicit State(const SearchCriteria& wanted);

    const SearchCriteria criteria;
    Way way = Way::rows;
    std::string pattern; // lower-cased; of `texts`
    bool wholeWords = false;
    bool readsHits = false; // what holds the pattern is still to be held against the criteria
    std::size_t mostTextBytes = 0;

    bool started = false;
    bool done = false;
    bool disturbed = false;
    bool failed = false;
    double share = 0;
    std::uint64_t revision = 0;   // of the records, at the start
    std::uint64_t generation = 0; // of the texts, at the last step
    std::size_t place = 0;        // in the texts, or the slot that is next
    std::int64_t after = 0;       // the number of the row looked at last
};
