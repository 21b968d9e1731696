#include "platform/project/SearchCriteria.h"

#include "platform/base/Strings.h"
#include "platform/project/TextMatch.h"

#include <algorithm>
#include <array>

namespace projdb {

namespace {

constexpr std::array<std::string_view, 9> kMethodNames = {
    "Contains", "DoesNotContain", "Equals",      "Differs",  "StartsWith",
    "EndsWith", "LessThan",       "GreaterThan", "WholeWord"};
constexpr std::array<std::string_view, 3> kOperatorNames = {"And", "Or", "AndNot"};

template <class Value, std::size_t N>
std::optional<Value> valueOf(const std::array<std::string_view, N>& names,
                             std::string_view text) noexcept {
    const auto found = std::find(names.begin(), names.end(), text);
    if (found == names.end())
        return std::nullopt;
    return static_cast<Value>(found - names.begin());
}

bool readsAsNumber(DBFieldTypes::eType type) { return type != DBFieldTypes::text; }

// Negative, 0 or positive, as std::string::compare.
int compareValues(const std::string& text, const std::string& pattern, DBFieldTypes::eType type) {
    if (readsAsNumber(type)) {
        const std::optional<double> a = cutroom::parseDouble(cutroom::trim(text));
        const std::optional<double> b = cutroom::parseDouble(cutroom::trim(pattern));
        if (a && b)
            return *a < *b ? -1 : (*b < *a ? 1 : 0);
    }
    return text.compare(pattern);
}

// `text` is lower-cased already.
bool matchesOne(const std::string& text, const Pattern& pattern, DBFieldTypes::eType type) {
    const std::string wanted = cutroom::toLowerUtf8(pattern.text);
    switch (pattern.match) {
    case eMatchMethod::contains:
        return cutroom::compareFolded(text, wanted, false);
    case eMatchMethod::doesNotContain:
        return !cutroom::compareFolded(text, wanted, false);
    case eMatchMethod::equals:
        return text == wanted;
    case eMatchMethod::differs:
        return text != wanted;
    case eMatchMethod::startsWith:
        return text.starts_with(wanted);
    case eMatchMethod::endsWith:
        return text.ends_with(wanted);
    case eMatchMethod::lessThan:
        return compareValues(text, wanted, type) < 0;
    case eMatchMethod::greaterThan:
        return compareValues(text, wanted, type) > 0;
    case eMatchMethod::wholeWord:
        return cutroom::compareFolded(text, wanted, true);
    }
    return false;
}

bool combine(bool before, eLogicalOperator op, bool next) {
    switch (op) {
    case eLogicalOperator::andAlso:
        return before && next;
    case eLogicalOperator::orElse:
        return before || next;
    case eLogicalOperator::andNot:
        return before && !next;
    }
    return false;
}

bool matchesQuickSearch(const Record& record, const SearchCriteria& criteria) {
    const std::string wanted = cutroom::toLowerUtf8(criteria.quickSearch);
    const auto holds = [&](const std::string& text) {
        return cutroom::compareFolded(cutroom::toLowerUtf8(text), wanted,
                                      criteria.has(SearchCriteria::kWholeWords));
    };
    return std::any_of(record.attributes.begin(), record.attributes.end(),
                       [&](const auto& entry) { return holds(entry.second); }) ||
           std::any_of(record.mediaLocations.begin(), record.mediaLocations.end(), holds);
}

bool matchesAttributes(const Record& record, const SearchCriteria& criteria) {
    const auto holds = [&](const AttributeCriterion& criterion) {
        const std::string text = record.getText(criterion.attribute);
        if (text.empty())
            return criteria.has(SearchCriteria::kAllowEmpty);
        return criterion.patterns.matches(text, criterion.attribute.getFieldType());
    };
    return std::all_of(criteria.attributes.begin(), criteria.attributes.end(), holds);
}

bool matchesMarkers(const Record& record, const SearchCriteria& criteria) {
    if (criteria.markerTypesWanted != 0 && (record.markerTypes & criteria.markerTypesWanted) == 0)
        return false;
    if ((record.markerTypes & criteria.markerTypesUnwanted) != 0)
        return false;
    return criteria.markers.empty() ||
           std::any_of(record.markerTexts.begin(), record.markerTexts.end(),
                       [&](const std::string& text) { return criteria.markers.matches(text); });
}

} // namespace

std::string_view getPersistableString(eMatchMethod method) noexcept {
    return kMethodNames[static_cast<std::size_t>(method)];
}
std::string_view getPersistableString(eLogicalOperator op) noexcept {
    return kOperatorNames[static_cast<std::size_t>(op)];
}
std::optional<eMatchMethod> matchMethodFromString(std::string_view text) noexcept {
    return valueOf<eMatchMethod>(kMethodNames, text);
}
std::optional<eLogicalOperator> logicalOperatorFromString(std::string_view text) noexcept {
    return valueOf<eLogicalOperator>(kOperatorNames, text);
}

bool PatternList::matches(std::string_view text, DBFieldTypes::eType fieldType) const {
    if (patterns.empty())
        return true;
    const std::string folded = cutroom::toLowerUtf8(text);
    bool result = matchesOne(folded, patterns.front(), fieldType);
    if (operators.size() + 1 != patterns.size())
        return result;
    for (std::size_t i = 0; i < operators.size(); ++i)
        result = combine(result, operators[i], matchesOne(folded, patterns[i + 1], fieldType));
    return result;
}

LogAttribute AttributeCriterion::named(const std::string& id) {
    const std::optional<LogAttribute> known = LogAttribute::fromID(id);
    return known ? *known : LogAttribute(0, id, cutroom::toWide(id), DBFieldTypes::text);
}

SearchCriteria::SearchCriteria() = default;
SearchCriteria::SearchCriteria(const SearchCriteria&) = default;
SearchCriteria::SearchCriteria(SearchCriteria&&) noexcept = default;
SearchCriteria& SearchCriteria::operator=(const SearchCriteria&) = default;
SearchCriteria& SearchCriteria::operator=(SearchCriteria&&) noexcept = default;
SearchCriteria::~SearchCriteria() = default;

bool SearchCriteria::needsTextTest() const noexcept {
    return isQuickSearch() || !attributes.empty() || !markers.empty() || markerTypesWanted != 0 ||
           markerTypesUnwanted != 0;
}

unsigned SearchCriteria::excludedKinds() const noexcept {
    return (wants(kKindImage) ? 0u : kKindImage) | (has(kAllowClipboard) ? 0u : kKindClipboard);
}

bool SearchCriteria::matchesKinds(unsigned recordKinds) const noexcept {
    return (recordKinds & kinds & ~unsigned{kKindImage}) != 0 &&
           (recordKinds & excludedKinds()) == 0;
}

bool matchRecord(const Record& record, const SearchCriteria& criteria) {
    if (criteria.isQuickSearch())
        return matchesQuickSearch(record, criteria);
    return matchesAttributes(record, criteria) && matchesMarkers(record, criteria);
}

} // namespace projdb
