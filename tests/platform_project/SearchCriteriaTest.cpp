// Criteria against records, and their stored form.
#include "platform/project/SearchCriteria.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace projdb;
using testing::ElementsAre;
using testing::Pair;

namespace {

Record shot() {
    Record record;
    record.cookie = Cookie('E', 1);
    record.kinds = kKindClip;
    record.logType = kLogTypeSource;
    record.end = 10.0;
    record.created = 1000;
    record.attributes = {{"name", "Harbour at Dawn"}, {"scene", "12A"}, {"take", "9"}};
    record.mediaLocations = {"/mnt/raid/HARBOUR.mov"};
    record.markerTexts = {"Gull crosses", "Boat"};
    record.markerTypes = markerTypeBit(0xFF0000);
    return record;
}

Pattern pattern(eMatchMethod match, const char* text) { return {text, match}; }

using A = LogAttribute;
using M = eMatchMethod;

TEST(MatchRecord, decidesByTheMethod) {
    struct Row {
        LogAttribute::eType attribute;
        eMatchMethod match;
        const char* text;
        bool expected;
    };
    // Numbers compare by value, an attribute without text never matches.
    for (const Row& row :
         {Row{A::name, M::contains, "AT D", true}, Row{A::name, M::doesNotContain, "dusk", true},
          Row{A::scene, M::equals, "12a", true}, Row{A::scene, M::equals, "12", false},
          Row{A::scene, M::differs, "12a", false}, Row{A::name, M::startsWith, "harbour", true},
          Row{A::name, M::endsWith, "harbour", false}, Row{A::name, M::wholeWord, "dawn", true},
          Row{A::take, M::lessThan, "10", true}, Row{A::scene, M::greaterThan, "0", true},
          Row{A::created, M::greaterThan, "999.5", true},
          Row{A::duration, M::greaterThan, "10", false}, Row{A::duration, M::lessThan, "10", false},
          Row{A::mediaLocation, M::contains, "raid/harb", true},
          Row{A::notes, M::doesNotContain, "x", false}}) {
        SearchCriteria criteria;
        criteria.attributes = {{row.attribute, {{pattern(row.match, row.text)}, {}}}};
        EXPECT_EQ(matchRecord(shot(), criteria), row.expected)
            << getPersistableString(row.match) << ' ' << row.text;
    }
}

TEST(PatternList, joinsFromLeftToRight) {
    const Pattern yes = pattern(M::contains, "a");
    const Pattern no = pattern(M::contains, "z");
    using O = eLogicalOperator;
    const std::pair<PatternList, bool> rows[] = {
        {{{}, {}}, true},
        {{{no, yes}, {O::orElse}}, true},
        {{{yes, no}, {O::andAlso}}, false},
        {{{yes, no}, {O::andNot}}, true},
        {{{yes, yes, no}, {O::orElse, O::andAlso}}, false},
        {{{no, yes, yes}, {O::andAlso, O::orElse}}, true},
        {{{yes, no}, {}}, true}, // operators that do not fit leave the first pattern alone
        {{{no, yes}, {O::orElse, O::orElse}}, false}};
    for (const auto& [list, expected] : rows)
        EXPECT_EQ(list.matches("abc"), expected);
}

TEST(MatchRecord, letsAllCriteriaDecideAndEmptyAttributesMatchWhenAllowed) {
    SearchCriteria criteria;
    criteria.attributes = {{A::name, {{pattern(M::contains, "dawn")}, {}}},
                           {A::scene, {{pattern(M::equals, "13")}, {}}}};
    EXPECT_FALSE(matchRecord(shot(), criteria));
    criteria.attributes[1].patterns.patterns[0].text = "12A";
    EXPECT_TRUE(matchRecord(shot(), criteria));
    criteria.attributes.push_back({A::notes, {{pattern(M::contains, "rain")}, {}}});
    EXPECT_FALSE(matchRecord(shot(), criteria));
    criteria.options = SearchCriteria::kAllowEmpty;
    EXPECT_TRUE(matchRecord(shot(), criteria));
}

TEST(MatchRecord, asksMarkersByTextAndType) {
    struct Row {
        const char* text;
        std::uint32_t wanted;
        std::uint32_t unwanted;
        bool expected;
    };
    const std::uint32_t red = markerTypeBit(0xFF0000);
    const std::uint32_t other = markerTypeBit(0x123456);
    for (const Row& row :
         {Row{"gull", 0, 0, true}, Row{"whale", 0, 0, false}, Row{"", red | other, 0, true},
          Row{"", other, 0, false}, Row{"", 0, red, false}, Row{"boat", red, other, true}}) {
        SearchCriteria criteria;
        if (*row.text)
            criteria.markers.patterns = {pattern(M::contains, row.text)};
        criteria.markerTypesWanted = row.wanted;
        criteria.markerTypesUnwanted = row.unwanted;
        EXPECT_EQ(matchRecord(shot(), criteria), row.expected) << row.text << row.wanted;
    }
}

TEST(MatchRecord, quickSearchLooksAtAllTextsAndNothingElse) {
    SearchCriteria criteria;
    criteria.attributes = {{A::name, {{pattern(M::contains, "nowhere")}, {}}}};
    for (const char* const text : {"dawn", "12a", "RAID/h"}) {
        criteria.quickSearch = text;
        EXPECT_TRUE(matchRecord(shot(), criteria)) << text;
    }
    criteria.quickSearch = "daw";
    criteria.options = SearchCriteria::kWholeWords;
    EXPECT_FALSE(matchRecord(shot(), criteria));
}

TEST(SearchCriteria, wantsAndExcludesKinds) {
    struct Row {
        unsigned kinds;
        unsigned options;
        unsigned record;
        bool expected;
    };
    for (const Row& row :
         {Row{kKindClip, 0, kKindClip, true}, Row{kKindClip, 0, kKindSequence, false},
          Row{kKindClip, 0, kKindClip | kKindImage, false},
          Row{kKindClip | kKindImage, 0, kKindClip | kKindImage, true},
          Row{kKindClip, 0, kKindClip | kKindClipboard, false},
          Row{kKindClip, SearchCriteria::kAllowClipboard, kKindClip | kKindClipboard, true},
          Row{kKindSequence | kKindImage, 0, kKindClip | kKindImage, false},
          Row{0, 0, kKindClip, false}}) {
        SearchCriteria criteria;
        criteria.kinds = row.kinds;
        criteria.options = row.options;
        EXPECT_EQ(criteria.matchesKinds(row.record), row.expected) << row.kinds << row.record;
    }
}

TEST(SearchCriteria, namesMethodsAndOperators) {
    for (int i = 0; i <= static_cast<int>(M::wholeWord); ++i) {
        const auto method = static_cast<M>(i);
        EXPECT_EQ(matchMethodFromString(getPersistableString(method)), method);
    }
    EXPECT_EQ(getPersistableString(eLogicalOperator::andNot), "AndNot");
    EXPECT_EQ(logicalOperatorFromString("Or"), eLogicalOperator::orElse);
    EXPECT_FALSE(matchMethodFromString("contains") || logicalOperatorFromString(""));
}

SearchCriteria fullCriteria() {
    SearchCriteria criteria;
    criteria.kinds = kKindSync | kKindImage;
    criteria.options = SearchCriteria::kAllowEmpty;
    criteria.quickSearch = "tide\tand \\ time";
    criteria.attributes = {{A::name,
                            {{pattern(M::startsWith, "a\tb"), pattern(M::differs, ""),
                              pattern(M::wholeWord, "line\nfeed\\")},
                             {eLogicalOperator::orElse, eLogicalOperator::andNot}}},
                           {A::compression, {}},
                           {AttributeCriterion::named("mood"), {{pattern(M::equals, "grim")}, {}}}};
    criteria.markers = {{pattern(M::contains, "gull")}, {}};
    criteria.markerTypesUnwanted = 0xFFFFFFFF;
    return criteria;
}

TEST(SearchCriteria, restoresWhatItSaves) {
    for (const SearchCriteria& criteria : {SearchCriteria(), fullCriteria()}) {
        std::vector<AttributeValuePair> pairs;
        criteria.saveTo(pairs);
        SearchCriteria restored = fullCriteria();
        restored.restoreFrom(pairs);
        EXPECT_TRUE(restored == criteria);
    }
}

TEST(SearchCriteria, savesOnlyWhatIsSet) {
    SearchCriteria criteria;
    criteria.kinds = kKindClip;
    criteria.markers = {{pattern(M::contains, "x\ty")}, {}};
    std::vector<AttributeValuePair> pairs;
    criteria.saveTo(pairs);
    EXPECT_THAT(pairs, ElementsAre(Pair("Kinds", "1"), Pair("Options", "0"),
                                   Pair("Markers", "Contains\tx\\ty")));
}

TEST(SearchCriteria, passesOverIllFormedPairs) {
    const std::vector<AttributeValuePair> pairs = {
        {"Kinds", "4294967296"},
        {"Options", "-1"},
        {"Later", "1"},
        {"Markers", ""},
        {"MarkerTypes", "1"},
        {"MarkerTypes", "1,x"},
        {"Attribute", ""},
        {"Attribute", "name\tContains"},
        {"Attribute", "name\tcontains\tx"},
        {"Attribute", "name\tContains\tx\tXor\tContains\ty"},
        {"Attribute", "name\tContains\tx\\"}};
    SearchCriteria criteria = fullCriteria();
    criteria.restoreFrom(pairs);
    EXPECT_TRUE(criteria == SearchCriteria());
}

} // namespace
