#include "platform/project/ProjDbSearch.h"

#include "platform/base/Strings.h"
#include "platform/prefs/Configuration.h"
#include "platform/project/ProjectDatabase.h"
#include "platform/project/SearchState.h"

#include <algorithm>
#include <limits>

namespace projdb {

namespace {

constexpr int kMostTextMegabytes = 1024;

// Tells whether records hold the attribute as a text field of its own.
bool isPlainText(LogAttribute::eType type) {
    switch (type) {
    case LogAttribute::invalid:
    case LogAttribute::cookie:
    case LogAttribute::modified:
    case LogAttribute::created:
    case LogAttribute::type:
    case LogAttribute::duration:
    case LogAttribute::tracks:
    case LogAttribute::mediaLocation:
        return false;
    default:
        return true;
    }
}

bool needsOccurrence(eMatchMethod match) {
    switch (match) {
    case eMatchMethod::contains:
    case eMatchMethod::equals:
    case eMatchMethod::startsWith:
    case eMatchMethod::endsWith:
    case eMatchMethod::wholeWord:
        return true;
    default:
        return false;
    }
}

// A text that every match of the patterns holds; empty when there is none.
std::string neededText(const PatternList& list) {
    const bool joined = list.operators.size() + 1 == list.patterns.size();
    if (list.empty() || !needsOccurrence(list.patterns.front().match) ||
        (joined &&
         std::count(list.operators.begin(), list.operators.end(), eLogicalOperator::orElse) != 0))
        return {};
    return cutroom::toLowerUtf8(list.patterns.front().text);
}

// The longest text that some attribute of every match holds. The longer a text is, the fewer
// records have it.
std::string neededText(const SearchCriteria& criteria) {
    std::string longest;
    if (criteria.has(SearchCriteria::kAllowEmpty))
        return longest;
    for (const AttributeCriterion& criterion : criteria.attributes) {
        if (!isPlainText(criterion.attribute.getType()))
            continue;
        if (std::string text = neededText(criterion.patterns); text.size() > longest.size())
            longest = std::move(text);
    }
    return longest;
}

} // namespace

Search::State::State(const SearchCriteria& wanted)
    : criteria(wanted),
      mostTextBytes(
          static_cast<std::size_t>(cutroom::configInt("search_text_megabytes", kMostTextMegabytes,
                                                      0, std::numeric_limits<int>::max()))
          << 20) {
    if (!criteria.needsTextTest()) {
        way = Way::kinds;
    } else if (criteria.isQuickSearch()) {
        pattern = cutroom::toLowerUtf8(criteria.quickSearch);
        wholeWords = criteria.has(SearchCriteria::kWholeWords);
        way = Way::texts;
    } else {
        pattern = neededText(criteria);
        readsHits = true;
        way = pattern.empty() ? Way::rows : Way::texts;
    }
}

Search::Search(const SearchCriteria& criteria) : state_(std::make_unique<State>(criteria)) {}
Search::~Search() = default;

bool Search::next(std::vector<Hit>& found) {
    if (!state_->done)
        cutroom::ProjectDatabase::instance().searchOn(*state_, found);
    return !state_->done;
}

double Search::share() const noexcept { return state_->done ? 1.0 : state_->share; }
bool Search::failed() const noexcept { return state_->failed; }
bool Search::disturbed() const noexcept { return state_->disturbed; }

void putInOrder(std::vector<Hit>& hits) {
    const auto before = [](const Hit& a, const Hit& b) { return a.number < b.number; };
    if (!std::is_sorted(hits.begin(), hits.end(), before))
        std::stable_sort(hits.begin(), hits.end(), before);
    const auto same = [](const Hit& a, const Hit& b) { return a.number == b.number; };
    hits.erase(std::unique(hits.begin(), hits.end(), same), hits.end());
}

} // namespace projdb
