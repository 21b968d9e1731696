// The criteria of a search as far as the database itself answers them: kinds, free text, attribute
// patterns and markers.
#pragma once

#include "platform/base/Export.h"
#include "platform/project/LogAttribute.h"
#include "platform/project/ProjDbRecord.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace projdb {

// How a pattern is held against a text. Text is compared without regard to case; the order of
// numbers and dates is that of their values, of text that of its lower-cased characters.
enum class eMatchMethod {
    contains,
    doesNotContain,
    equals,
    differs,
    startsWith,
    endsWith,
    lessThan,
    greaterThan,
    wholeWord,
};
// How a pattern joins what stands before it, from left to right.
enum class eLogicalOperator { andAlso, orElse, andNot };

// "Contains", "DoesNotContain", "Equals", "Differs", "StartsWith", "EndsWith", "LessThan",
// "GreaterThan", "WholeWord"; "And", "Or", "AndNot". An unknown text gives nothing.
CUTROOM_API std::string_view getPersistableString(eMatchMethod method) noexcept;
CUTROOM_API std::string_view getPersistableString(eLogicalOperator op) noexcept;
CUTROOM_API std::optional<eMatchMethod> matchMethodFromString(std::string_view text) noexcept;
CUTROOM_API std::optional<eLogicalOperator>
logicalOperatorFromString(std::string_view text) noexcept;

// One text and how it is held against the value.
struct Pattern {
    std::string text; // UTF-8
    eMatchMethod match = eMatchMethod::contains;
    friend bool operator==(const Pattern&, const Pattern&) = default;
};

// Patterns joined by operators: operators[i] joins patterns[i + 1]. Without patterns it is empty
// and matches everything.
struct CUTROOM_API PatternList {
    std::vector<Pattern> patterns;
    std::vector<eLogicalOperator> operators; // one fewer than the patterns

    bool empty() const noexcept { return patterns.empty(); }
    // Holds the patterns against `text`. `fieldType` decides how lessThan and greaterThan compare.
    bool matches(std::string_view text, DBFieldTypes::eType fieldType = DBFieldTypes::text) const;
    friend bool operator==(const PatternList&, const PatternList&) = default;
};

// What one attribute must hold.
struct CUTROOM_API AttributeCriterion {
    LogAttribute attribute;
    PatternList patterns; // without any, that it holds a text
    // The attribute of that persisted name. One that the project does not define is searched too,
    // by the texts under that name.
    static LogAttribute named(const std::string& id);
    friend bool operator==(const AttributeCriterion&, const AttributeCriterion&) = default;
};

// A name and a text, as criteria are saved beside other settings.
using AttributeValuePair = std::pair<std::string, std::string>;

// A value; any thread. The first flag word uses the bits of `eRecordKind` for what is wanted.
class CUTROOM_API SearchCriteria {
public:
    enum eOption : unsigned { kWholeWords = 1, kAllowClipboard = 2, kAllowEmpty = 4 };

    SearchCriteria();
    SearchCriteria(const SearchCriteria&);
    SearchCriteria(SearchCriteria&&) noexcept;
    SearchCriteria& operator=(const SearchCriteria&);
    SearchCriteria& operator=(SearchCriteria&&) noexcept;
    virtual ~SearchCriteria();

    unsigned kinds = kKindClip | kKindSequence | kKindSync | kKindPrint | kKindSubClip |
                     kKindClipSection | kKindImage;
    unsigned options = 0; // eOption bits
    std::string quickSearch;
    std::vector<AttributeCriterion> attributes; // all must match
    PatternList markers;                        // some marker's text must match
    std::uint32_t markerTypesWanted = 0;        // some marker must be of one of these types
    std::uint32_t markerTypesUnwanted = 0;      // no marker may be of one of these

    bool wants(eRecordKind kind) const noexcept { return (kinds & kind) != 0; }
    bool has(eOption option) const noexcept { return (options & option) != 0; }
    // Tells whether free text is searched; then the attribute and marker criteria do not count.
    bool isQuickSearch() const noexcept { return !quickSearch.empty(); }
    // Tells whether anything but the kind is asked of the record's texts.
    bool needsTextTest() const noexcept;
    // The kinds that no result may have: images unless asked for, and the clipboard's items unless
    // they are allowed.
    unsigned excludedKinds() const noexcept;
    // The record has one of the wanted kinds and none of the excluded ones. Allowing images does
    // not make them wanted; an image is a clip too.
    bool matchesKinds(unsigned recordKinds) const noexcept;

    // Appends the criteria as pairs: "Kinds", "Options", "QuickSearch", then one "Attribute" per
    // attribute, "Markers", "MarkerTypes", each only when set.
    virtual void saveTo(std::vector<AttributeValuePair>& pairs) const;
    // Replaces the criteria by what the pairs hold; unknown names and ill-formed values are passed
    // over.
    virtual void restoreFrom(const std::vector<AttributeValuePair>& pairs);

    friend bool operator==(const SearchCriteria&, const SearchCriteria&) = default;
};

// The database's own matching of text criteria. A quick search matches when some attribute's text
// holds the free text (as a whole word with `kWholeWords`). Otherwise every attribute criterion and
// the marker criteria must match; an attribute without text matches only with `kAllowEmpty`.
// Criteria that ask for no text match every record.
CUTROOM_API bool matchRecord(const Record& record, const SearchCriteria& criteria);

} // namespace projdb
