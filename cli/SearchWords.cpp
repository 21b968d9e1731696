#include "cli/SearchWords.h"

#include "cli/ContainerText.h"
#include "cli/Names.h"
#include "filters/ProjectFilterManager.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/store/ChangedEdits.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <iterator>
#include <optional>

namespace cutroom::cli {

namespace {

using Criteria = ProjectSearch::Criteria;
using projdb::eLogicalOperator;
using projdb::eMatchMethod;

// In the order of eMatchMethod and eLogicalOperator.
constexpr std::array<std::string_view, 9> kMatchWords = {
    "contains", "lacks", "is", "is-not", "starts", "ends", "less-than", "greater-than", "has-word"};
constexpr std::array<std::string_view, 3> kOperatorWords = {"and", "or", "and-not"};

struct KindWord {
    std::string_view word;
    projdb::eRecordKind kind;
};
constexpr KindWord kKindWords[] = {{"sequences", projdb::kKindSequence},
                                   {"clips", projdb::kKindClip},
                                   {"clip-sections", projdb::kKindClipSection},
                                   {"subclips", projdb::kKindSubClip},
                                   {"prints", projdb::kKindPrint},
                                   {"syncs", projdb::kKindSync}};
// What bins show of an edit and the project database does not hold.
constexpr LogAttribute::eType kReadOffEdits[] = {LogAttribute::timecode,  LogAttribute::endTimecode,
                                                 LogAttribute::frameRate, LogAttribute::markIn,
                                                 LogAttribute::markOut,   LogAttribute::numMarkers};
// Marker colours beyond those with a name.
constexpr std::uint32_t kOtherColours = 1u << 8;

template <class Words> std::string listOf(const Words& words) {
    std::string text;
    for (const std::string_view word : words)
        text += (text.empty() ? "" : ", ") + std::string(word);
    return text;
}

template <class Enum, std::size_t N>
Enum takeEnum(SessionWords& words, const char* what,
              const std::array<std::string_view, N>& choices) {
    const std::string& word = words.take(what);
    for (std::size_t i = 0; i < N; ++i)
        if (word == choices[i])
            return static_cast<Enum>(i);
    refuse(StatusCode::wrongUsage, word, "is none of " + listOf(choices));
}

projdb::PatternList takePatterns(SessionWords& words) {
    projdb::PatternList list;
    const auto takeOne = [&] {
        const auto match = takeEnum<eMatchMethod>(words, "how to match", kMatchWords);
        list.patterns.push_back({words.take("a text"), match});
    };
    takeOne();
    while (!words.done()) {
        list.operators.push_back(
            takeEnum<eLogicalOperator>(words, "and, or, and-not", kOperatorWords));
        takeOne();
    }
    return list;
}

// By persisted name or, in any case, by the name shown to people.
LogAttribute takeAttribute(SessionWords& words) {
    const std::string& text = words.take("an attribute");
    std::optional<LogAttribute> found = LogAttribute::fromID(text);
    for (const LogAttribute& attribute : LogAttribute::builtIn())
        if (!found && equalNoCase(toUtf8(attribute.getDisplayName()), text))
            found = attribute;
    if (!found)
        found = require(parseColumn(text));
    if (std::find(std::begin(kReadOffEdits), std::end(kReadOffEdits), found->getType()) !=
        std::end(kReadOffEdits))
        refuse(StatusCode::wrongUsage, text, "is read off each edit, so no search knows it");
    return *found;
}

// "2026-11-22", "2026-11-22 15:24" (UTC), as dates are shown, as seconds since 1970.
std::optional<long long> secondsOfDate(std::string_view text) {
    const auto number = [&](std::size_t at, std::size_t size) {
        const std::string_view digits = text.substr(std::min(at, text.size()), size);
        const bool whole = digits.size() == size &&
                           digits.find_first_not_of("0123456789") == std::string_view::npos;
        return whole ? parseInt(digits) : std::nullopt;
    };
    const auto year = number(0, 4), month = number(5, 2), day = number(8, 2);
    const bool timed = text.size() == 16 && text[10] == ' ' && text[13] == ':';
    const auto hour = timed ? number(11, 2) : 0, minute = timed ? number(14, 2) : 0;
    if (!year || !month || !day || !hour || !minute || text[4] != '-' || text[7] != '-' ||
        (text.size() != 10 && !timed) || *hour > 23 || *minute > 59)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(*year)),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok())
        return std::nullopt;
    const auto days = std::chrono::sys_days(date).time_since_epoch().count();
    return (static_cast<long long>(days) * 24 + *hour) * 3600 + *minute * 60;
}

// When something was made or changed is kept as seconds, which no date as it is shown would match.
void takeDates(projdb::PatternList& list) {
    for (projdb::Pattern& pattern : list.patterns) {
        const bool ordered =
            pattern.match == eMatchMethod::lessThan || pattern.match == eMatchMethod::greaterThan;
        if (const auto seconds = secondsOfDate(pattern.text); seconds && ordered)
            pattern.text = std::to_string(*seconds);
        else if (!parseDouble(pattern.text))
            refuse(StatusCode::wrongUsage, pattern.text,
                   "say less-than or greater-than \"2026-11-22\" or \"2026-11-22 15:24\" (UTC)");
    }
}

projdb::AttributeCriterion parseWhere(const std::string& line) {
    SessionWords words = SessionWords::parse(line);
    projdb::AttributeCriterion criterion;
    criterion.attribute = takeAttribute(words);
    criterion.patterns = takePatterns(words);
    const unsigned type = criterion.attribute.getType();
    if (type == LogAttribute::created || type == LogAttribute::modified)
        takeDates(criterion.patterns);
    return criterion;
}

unsigned parseKinds(const std::string& text) {
    unsigned kinds = 0;
    for (const std::string& word : split(text, ',')) {
        unsigned kind = 0;
        std::string known;
        for (const KindWord& one : kKindWords) {
            known += (known.empty() ? "" : ", ") + std::string(one.word);
            if (word == one.word)
                kind = one.kind;
        }
        kinds |= kind;
        if (kind == 0)
            refuse(StatusCode::wrongUsage, word, "is none of " + known);
    }
    return kinds;
}

std::uint32_t parseColours(const std::string& text) {
    std::uint32_t mask = 0;
    for (const std::string& word : split(text, ',')) {
        std::uint32_t bit = kOtherColours;
        if (word != "other") {
            bit = projdb::markerTypeBit(require(parseColour(word)));
            if (bit == kOtherColours)
                refuse(StatusCode::wrongUsage, word,
                       "no colour of its own in a search; `other` stands for all that are not red, "
                       "green, blue, cyan, magenta, yellow, white or black");
        }
        mask |= bit;
    }
    return mask;
}

eItemPresence parsePresence(const std::string& text) {
    if (text == "present")
        return eItemPresence::present;
    if (text == "absent")
        return eItemPresence::absent;
    refuse(StatusCode::wrongUsage, text, "is neither present nor absent");
}

double parseSeconds(const std::string& text) {
    const auto seconds = parseDouble(text);
    if (!seconds || !std::isfinite(*seconds))
        refuse(StatusCode::wrongUsage, text, "is no time in seconds");
    return *seconds;
}

DriveID parseDrive(const std::string& text) {
    const DriveID drive = DriveID::of(text.ends_with('/') ? text : text + '/');
    return drive.empty() ? DriveID::fromString(text) : drive;
}

// Saved ones by name; else a file.
Criteria savedCriteria(const std::string& text) {
    const auto saved = findSearch(text);
    if (saved)
        if (const auto criteria = (*saved)->getCriteria())
            return *criteria;
    if (fileExists(text))
        return require(Criteria::load(text));
    refuse(StatusCode::notFound, text,
           saved ? "these results came from no search"
                 : saved.status().message() + ", and no file");
}

bool asksBoth(const Criteria& criteria) {
    return criteria.isQuickSearch() &&
           (!criteria.attributes.empty() || !criteria.markers.empty() ||
            criteria.markerTypesWanted != 0 || criteria.markerTypesUnwanted != 0);
}

void addTexts(Criteria& criteria, const SearchConditions& conditions) {
    const bool savedSo = asksBoth(criteria); // then the text alone counts
    if (!conditions.text.empty())
        criteria.quickSearch = conditions.text;
    for (const std::string& line : conditions.where)
        criteria.attributes.push_back(parseWhere(line));
    if (!conditions.markers.empty()) {
        SessionWords words = SessionWords::parse(conditions.markers);
        criteria.markers = takePatterns(words);
    }
    if (!conditions.colours.empty())
        criteria.markerTypesWanted = parseColours(conditions.colours);
    if (!conditions.noColours.empty())
        criteria.markerTypesUnwanted = parseColours(conditions.noColours);
    if (!savedSo && asksBoth(criteria))
        refuse(StatusCode::wrongUsage, criteria.quickSearch,
               "a text anywhere and conditions on attributes or markers do not go together");
}

Criteria build(const SearchConditions& conditions) {
    Criteria criteria = conditions.saved.empty() ? Criteria() : savedCriteria(conditions.saved);
    if (!conditions.kinds.empty())
        criteria.kinds = (criteria.kinds & projdb::kKindImage) | parseKinds(conditions.kinds);
    if (conditions.noImages)
        criteria.kinds &= ~unsigned{projdb::kKindImage};
    addTexts(criteria, conditions);
    criteria.options |= (conditions.wholeWords ? Criteria::kWholeWords : 0u) |
                        (conditions.clipboard ? Criteria::kAllowClipboard : 0u) |
                        (conditions.orEmpty ? Criteria::kAllowEmpty : 0u);
    if (!conditions.drive.empty())
        criteria.mediaLocation = parseDrive(conditions.drive);
    if (!conditions.time.empty())
        criteria.requiredTime = parseSeconds(conditions.time);
    if (!conditions.video.empty())
        criteria.clipVTracks = parsePresence(conditions.video);
    if (!conditions.audio.empty())
        criteria.clipATracks = parsePresence(conditions.audio);
    if (!conditions.media.empty())
        criteria.clipMedia = parsePresence(conditions.media);
    return criteria;
}

// Where the value of the condition called `name` is kept; null when there is no such condition.
std::string* valueOf(SearchConditions& conditions, const std::string& name) {
    if (name == "where")
        return &conditions.where.emplace_back();
    const std::pair<const char*, std::string*> values[] = {
        {"text", &conditions.text},       {"saved", &conditions.saved},
        {"kinds", &conditions.kinds},     {"markers", &conditions.markers},
        {"colours", &conditions.colours}, {"no-colours", &conditions.noColours},
        {"drive", &conditions.drive},     {"time", &conditions.time},
        {"video", &conditions.video},     {"audio", &conditions.audio},
        {"media", &conditions.media}};
    for (const auto& [known, value] : values)
        if (name == known)
            return value;
    return nullptr;
}

bool* flagOf(SearchConditions& conditions, const std::string& name) {
    const std::pair<const char*, bool*> flags[] = {{"words", &conditions.wholeWords},
                                                   {"clipboard", &conditions.clipboard},
                                                   {"or-empty", &conditions.orEmpty},
                                                   {"no-images", &conditions.noImages}};
    for (const auto& [known, flag] : flags)
        if (name == known)
            return flag;
    return nullptr;
}

} // namespace

std::string matchWords() { return listOf(kMatchWords); }

Result<Criteria> criteriaOf(const SearchConditions& conditions) {
    try {
        return build(conditions);
    } catch (const Refused& refused) {
        return refused.status;
    }
}

std::string conditionUsage() {
    return "[where LINE] ... [text TEXT] [words] [kinds LIST] [markers LINE] [colours LIST] "
           "[no-colours LIST] [time SECONDS] [drive PLACE] [video present|absent] "
           "[audio present|absent] [media present|absent] [clipboard] [or-empty] [no-images] "
           "[saved NAME]";
}

Criteria takeConditions(SessionWords& words) {
    SearchConditions conditions;
    while (!words.done()) {
        const std::string name = words.take("a condition");
        if (bool* const flag = flagOf(conditions, name))
            *flag = true;
        else if (std::string* const value = valueOf(conditions, name))
            *value = words.take("its value");
        else
            refuse(StatusCode::wrongUsage, name, "is no condition");
    }
    return build(conditions);
}

Result<Kv::Ptr<SearchResultsFilter>> searchResults() {
    ChangedEdits::enter();
    const auto filter = ProjectFilterManager::instance().getFilter(SearchResultsFilter::fixedID());
    if (auto* const found = dynamic_cast<SearchResultsFilter*>(filter.get()))
        return Kv::Ptr<SearchResultsFilter>(found);
    return Status(StatusCode::failed, "search results", "no project is open");
}

Result<Kv::Ptr<SearchBin>> findSearch(const std::string& text) {
    const auto results = searchResults();
    if (!results)
        return results.status();
    Kv::Ptr<SearchBin> found;
    for (const auto& bin : (*results)->peekResults()) {
        if (bin->getID().asString() != text && toUtf8(bin->getName()) != text)
            continue;
        if (found)
            return Status(StatusCode::notFound, text,
                          "several searches have this name, give the cookie of one: " +
                              found->getID().asString() + ", " + bin->getID().asString());
        found = Kv::Ptr<SearchBin>(dynamic_cast<SearchBin*>(bin.get()));
    }
    if (!found)
        return Status(StatusCode::notFound, text, "no search has this name");
    return found;
}

const char* kindText(unsigned recordKinds) {
    if ((recordKinds & projdb::kKindImage) != 0)
        return "image";
    const std::pair<unsigned, const char*> texts[] = {
        {projdb::kKindClip, "clip"},       {projdb::kKindSequence, "sequence"},
        {projdb::kKindSync, "sync"},       {projdb::kKindPrint, "print"},
        {projdb::kKindSubClip, "subclip"}, {projdb::kKindClipSection, "clip section"}};
    for (const auto& [kind, text] : texts)
        if ((recordKinds & kind) != 0)
            return text;
    return "log";
}

} // namespace cutroom::cli
