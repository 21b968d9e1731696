// The criteria as attribute/value pairs.
//
// A list of patterns is one text of fields separated by tabs: method and text of the first pattern,
// then operator, method and text of each further one; tab, line feed and backslash inside a field
// are written as \t, \n and \\. An attribute's id stands in front of its patterns, if
// it has any.
#include "platform/base/Strings.h"
#include "platform/project/SearchCriteria.h"

namespace projdb {

namespace {

std::string escaped(std::string_view field) {
    std::string out;
    for (const char c : field) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '\t')
            out += "\\t";
        else if (c == '\n')
            out += "\\n";
        else
            out += c;
    }
    return out;
}

std::optional<std::string> unescaped(std::string_view field) {
    std::string out;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] != '\\') {
            out += field[i];
            continue;
        }
        if (++i == field.size())
            return std::nullopt;
        if (field[i] != '\\' && field[i] != 't' && field[i] != 'n')
            return std::nullopt;
        out += field[i] == 't' ? '\t' : (field[i] == 'n' ? '\n' : '\\');
    }
    return out;
}

std::vector<std::string> fieldsOf(const PatternList& list) {
    std::vector<std::string> fields;
    for (std::size_t i = 0; i < list.patterns.size(); ++i) {
        if (i > 0 && list.operators.size() + 1 != list.patterns.size())
            break;
        if (i > 0)
            fields.emplace_back(getPersistableString(list.operators[i - 1]));
        fields.emplace_back(getPersistableString(list.patterns[i].match));
        fields.push_back(escaped(list.patterns[i].text));
    }
    return fields;
}

// Reads the fields from index `at` on.
std::optional<PatternList> patternsOf(const std::vector<std::string>& fields, std::size_t at) {
    PatternList list;
    while (at < fields.size()) {
        if (!list.patterns.empty()) {
            const std::optional<eLogicalOperator> op = logicalOperatorFromString(fields[at++]);
            if (!op)
                return std::nullopt;
            list.operators.push_back(*op);
        }
        if (at + 2 > fields.size())
            return std::nullopt;
        const std::optional<eMatchMethod> method = matchMethodFromString(fields[at]);
        std::optional<std::string> text = unescaped(fields[at + 1]);
        if (!method || !text)
            return std::nullopt;
        list.patterns.push_back({std::move(*text), *method});
        at += 2;
    }
    return list.empty() ? std::nullopt : std::optional<PatternList>(std::move(list));
}

std::string numberText(unsigned value) {
    return cutroom::toText(static_cast<unsigned long long>(value));
}

std::optional<std::uint32_t> number32(std::string_view text) {
    const std::optional<unsigned long long> value = cutroom::parseUnsigned(text);
    if (!value || *value > UINT32_MAX)
        return std::nullopt;
    return static_cast<std::uint32_t>(*value);
}

void restoreAttribute(SearchCriteria& criteria, const std::string& value) {
    const std::vector<std::string> fields = cutroom::split(value, '\t');
    const std::optional<std::string> id = unescaped(fields.front());
    std::optional<PatternList> patterns =
        fields.size() == 1 ? PatternList() : patternsOf(fields, 1);
    if (id && !id->empty() && patterns)
        criteria.attributes.push_back({AttributeCriterion::named(*id), std::move(*patterns)});
}

void restoreMarkerTypes(SearchCriteria& criteria, const std::string& value) {
    const std::vector<std::string> masks = cutroom::split(value, ',');
    if (masks.size() != 2)
        return;
    const std::optional<std::uint32_t> wanted = number32(masks[0]);
    const std::optional<std::uint32_t> unwanted = number32(masks[1]);
    if (wanted && unwanted) {
        criteria.markerTypesWanted = *wanted;
        criteria.markerTypesUnwanted = *unwanted;
    }
}

} // namespace

void SearchCriteria::saveTo(std::vector<AttributeValuePair>& pairs) const {
    pairs.emplace_back("Kinds", numberText(kinds));
    pairs.emplace_back("Options", numberText(options));
    if (!quickSearch.empty())
        pairs.emplace_back("QuickSearch", quickSearch);
    for (const AttributeCriterion& criterion : attributes) {
        std::vector<std::string> fields = fieldsOf(criterion.patterns);
        fields.insert(fields.begin(), escaped(criterion.attribute.getID()));
        pairs.emplace_back("Attribute", cutroom::join(fields, "\t"));
    }
    if (!markers.empty())
        pairs.emplace_back("Markers", cutroom::join(fieldsOf(markers), "\t"));
    if (markerTypesWanted != 0 || markerTypesUnwanted != 0)
        pairs.emplace_back("MarkerTypes",
                           numberText(markerTypesWanted) + "," + numberText(markerTypesUnwanted));
}

void SearchCriteria::restoreFrom(const std::vector<AttributeValuePair>& pairs) {
    const SearchCriteria fresh;
    SearchCriteria::operator=(fresh);
    for (const auto& [key, value] : pairs) {
        if (key == "Kinds")
            kinds = number32(value).value_or(kinds);
        else if (key == "Options")
            options = number32(value).value_or(options);
        else if (key == "QuickSearch")
            quickSearch = value;
        else if (key == "Attribute")
            restoreAttribute(*this, value);
        else if (key == "Markers")
            markers = patternsOf(cutroom::split(value, '\t'), 0).value_or(PatternList());
        else if (key == "MarkerTypes")
            restoreMarkerTypes(*this, value);
    }
}

} // namespace projdb
