// The conditions of a search as a person writes them, for the command and the session alike.
#pragma once

#include "cli/SessionWords.h"
#include "filters/ProjectSearch.h"
#include "filters/SearchResultsFilter.h"
#include "platform/base/Status.h"

#include <string>
#include <vector>

namespace cutroom::cli {

// Each as written; empty: not asked.
struct SearchConditions {
    std::string text;               // anywhere in an asset's texts
    std::string saved;              // criteria to begin with: the name of saved ones, or a file
    std::string kinds;              // "sequences,clips"
    std::vector<std::string> where; // "ATTRIBUTE HOW TEXT [and|or|and-not HOW TEXT] ..."
    std::string markers;            // "HOW TEXT [and|or|and-not HOW TEXT] ..."
    std::string colours;            // "red,blue,other"
    std::string noColours;
    std::string drive;
    std::string time;                // seconds
    std::string video, audio, media; // "present" or "absent"
    bool wholeWords = false;
    bool clipboard = false;
    bool orEmpty = false;
    bool noImages = false;
};

// The criteria; `wrongUsage`, which names the word, for one that is not understood.
Result<ProjectSearch::Criteria> criteriaOf(const SearchConditions& conditions);

// What HOW may be, for help.
std::string matchWords();
// The words of a session's line that are conditions, as `takeConditions` reads them.
std::string conditionUsage();
// Takes all words that are left; refuses the line for one that is no condition.
ProjectSearch::Criteria takeConditions(SessionWords& words);

// The search results of the open project; fails without one.
Result<Kv::Ptr<SearchResultsFilter>> searchResults();
// One of them by name or cookie.
Result<Kv::Ptr<SearchBin>> findSearch(const std::string& text);

// "clip", "sequence", "sync", "print", "subclip", "clip section", "image"; "log" for none.
const char* kindText(unsigned recordKinds);

} // namespace cutroom::cli
