// Searches in words: names of their results, and descriptions.
#include "filters/ProjectSearch.h"
#include "platform/base/Strings.h"
#include "platform/host/StringTable.h"

#include <utility>

using cutroom::eItemPresence;
using Pairs = std::vector<ProjectSearch::AttributeValuePair>;
using Criteria = ProjectSearch::Criteria;

namespace {

constexpr const char* kSeparator = ", ";
constexpr unsigned kNumMarkerTypes = 9;
// Longer names help nobody.
constexpr std::size_t kMostNameCharacters = 80;

constexpr std::pair<projdb::eRecordKind, ResId> kKindNames[] = {
    {projdb::kKindSequence, cutroom::kResTypeEdits},
    {projdb::kKindClip, cutroom::kResTypeSources},
    {projdb::kKindClipSection, cutroom::kResTypeClipSections},
    {projdb::kKindSubClip, cutroom::kResTypeSubclips},
    {projdb::kKindPrint, cutroom::kResTypePrintGhosts},
    {projdb::kKindSync, cutroom::kResTypeSyncGhosts}};

std::string quoted(const std::string& text) { return '"' + text + '"'; }

template <class Enum> std::string wordOf(ResId first, Enum value) {
    return resourceStr(first + static_cast<ResId>(value));
}

std::string patternsText(const projdb::PatternList& list) {
    const bool joined = list.operators.size() + 1 == list.patterns.size();
    std::string text;
    for (std::size_t i = 0; i < (joined ? list.patterns.size() : 1) && !list.empty(); ++i) {
        if (i > 0)
            text += ' ' + wordOf(cutroom::kResSearchOperators, list.operators[i - 1]) + ' ';
        text += wordOf(cutroom::kResSearchMatch, list.patterns[i].match) + ' ' +
                quoted(list.patterns[i].text);
    }
    return text;
}

void describeKinds(const Criteria& criteria, Pairs& pairs) {
    const bool clipboard = criteria.has(Criteria::kAllowClipboard);
    if (criteria.kinds == Criteria().kinds && !clipboard)
        return;
    std::vector<std::string> names;
    for (const auto& [kind, name] : kKindNames)
        if (criteria.wants(kind))
            names.push_back(resourceStr(name));
    if (!criteria.wants(projdb::kKindImage))
        names.push_back(resourceStr(cutroom::kResSearchNoImages));
    if (clipboard)
        names.push_back(resourceStr(cutroom::kResSearchClipboard));
    pairs.emplace_back(resourceStr(cutroom::kResSearchKinds), cutroom::join(names, kSeparator));
}

void describeMarkerTypes(ResId title, std::uint32_t mask, Pairs& pairs) {
    std::vector<std::string> names;
    for (unsigned bit = 0; bit < kNumMarkerTypes; ++bit)
        if ((mask >> bit & 1u) != 0)
            names.push_back(wordOf(cutroom::kResSearchColours, bit));
    if (mask != 0)
        pairs.emplace_back(resourceStr(title), cutroom::join(names, kSeparator));
}

void describeTexts(const Criteria& criteria, Pairs& pairs) {
    if (criteria.isQuickSearch()) {
        const bool words = criteria.has(Criteria::kWholeWords);
        pairs.emplace_back(resourceStr(cutroom::kResSearchText),
                           quoted(criteria.quickSearch) +
                               (words ? ' ' + resourceStr(cutroom::kResSearchWholeWords) : ""));
        return;
    }
    for (const projdb::AttributeCriterion& criterion : criteria.attributes) {
        const bool empty = criteria.has(Criteria::kAllowEmpty);
        pairs.emplace_back(cutroom::toUtf8(criterion.attribute.getDisplayName()),
                           patternsText(criterion.patterns) +
                               (empty ? ' ' + resourceStr(cutroom::kResSearchOrEmpty) : ""));
    }
    if (!criteria.markers.empty())
        pairs.emplace_back(resourceStr(cutroom::kResSearchMarkers), patternsText(criteria.markers));
    describeMarkerTypes(cutroom::kResSearchMarkerTypes, criteria.markerTypesWanted, pairs);
    describeMarkerTypes(cutroom::kResSearchNoMarkerTypes, criteria.markerTypesUnwanted, pairs);
}

void describePresence(ResId title, eItemPresence presence, Pairs& pairs) {
    if (presence != eItemPresence::any)
        pairs.emplace_back(resourceStr(title), resourceStr(presence == eItemPresence::present
                                                               ? cutroom::kResSearchPresent
                                                               : cutroom::kResSearchAbsent));
}

// The texts that are looked for, without how.
std::vector<std::string> searchedTexts(const Criteria& criteria) {
    if (criteria.isQuickSearch())
        return {criteria.quickSearch};
    std::vector<std::string> texts;
    for (const projdb::AttributeCriterion& criterion : criteria.attributes)
        for (const projdb::Pattern& pattern : criterion.patterns.patterns)
            texts.push_back(pattern.text);
    for (const projdb::Pattern& pattern : criteria.markers.patterns)
        texts.push_back(pattern.text);
    std::erase(texts, std::string());
    return texts;
}

} // namespace

Pairs ProjectSearch::getDescription(const Criteria& criteria) {
    Pairs pairs;
    describeKinds(criteria, pairs);
    describeTexts(criteria, pairs);
    if (!criteria.mediaLocation.empty())
        pairs.emplace_back(resourceStr(cutroom::kResSearchDrive),
                           criteria.mediaLocation.asString());
    if (criteria.hasRequiredTime())
        pairs.emplace_back(resourceStr(cutroom::kResSearchTime),
                           cutroom::toText(criteria.requiredTime) + " s");
    describePresence(cutroom::kResSearchVideo, criteria.clipVTracks, pairs);
    describePresence(cutroom::kResSearchAudio, criteria.clipATracks, pairs);
    describePresence(cutroom::kResSearchMedia, criteria.clipMedia, pairs);
    return pairs;
}

LightweightString<wchar_t> ProjectSearch::makeName(const Criteria& criteria, bool allConditions) {
    std::vector<std::string> parts =
        allConditions ? std::vector<std::string>() : searchedTexts(criteria);
    if (parts.empty())
        for (const auto& [name, value] : getDescription(criteria))
            parts.push_back(name + ' ' + value);
    if (parts.empty())
        parts.push_back(resourceStr(cutroom::kResSearchEverything));
    LightweightString<wchar_t> name = cutroom::toWide(cutroom::join(parts, kSeparator));
    if (name.size() > kMostNameCharacters)
        name = name.substr(0, kMostNameCharacters - 1) + L'…';
    return name;
}
