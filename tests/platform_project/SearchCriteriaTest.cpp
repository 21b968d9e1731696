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

struct MethodCase {
    const char* name;
    LogAttribute::eType attribute;
    eMatchMethod match;
    const char* text;
    bool expected;
};

class MatchMethods : public testing::TestWithParam<MethodCase> {};

TEST_P(MatchMethods, decide) {
    const MethodCase& row = GetParam();
    SearchCriteria criteria;
    criteria.attributes = {{row.attribute, {{pattern(row.match, row.text)}, {}}}};
    EXPECT_EQ(matchRecord(shot(), criteria), row.expected);
}

using A = LogAttribute;
using M = eMatchMethod;
INSTANTIATE_TEST_SUITE_P(
    SearchCriteria, MatchMethods,
    testing::Values(MethodCase{"contains", A::name, M::contains, "AT D", true},
                    MethodCase{"containsNot", A::name, M::doesNotContain, "dusk", true},
                    MethodCase{"equalsBlindToCase", A::scene, M::equals, "12a", true},
                    MethodCase{"equalsPart", A::scene, M::equals, "12", false},
                    MethodCase{"differs", A::scene, M::differs, "12a", false},
                    MethodCase{"startsWith", A::name, M::startsWith, "harbour", true},
                    MethodCase{"endsWith", A::name, M::endsWith, "harbour", false},
                    MethodCase{"wholeWord", A::name, M::wholeWord, "dawn", true},
                    MethodCase{"numberLessByValue", A::take, M::lessThan, "10", true},
                    MethodCase{"textLessByCharacters", A::scene, M::lessThan, "9", true},
                    MethodCase{"dateGreater", A::created, M::greaterThan, "999.5", true},
                    MethodCase{"durationGreater", A::duration, M::greaterThan, "10", false},
                    MethodCase{"mediaLocation", A::mediaLocation, M::contains, "raid/harb", true},
                    MethodCase{"emptyAttributeNeverMatches", A::notes, M::doesNotContain, "x",
                               false}),
    [](const auto& row) { return row.param.name; });

TEST(PatternList, joinsFromLeftToRight) {
    const Pattern yes = pattern(M::contains, "a");
    const Pattern no = pattern(M::contains, "z");
    using O = eLogicalOperator;
    struct Row {
        PatternList list;
        bool expected;
    };
    for (const Row& row :
         {Row{{{}, {}}, true}, Row{{{no, yes}, {O::orElse}}, true},
          Row{{{yes, no}, {O::andAlso}}, false}, Row{{{yes, no}, {O::andNot}}, true},
          Row{{{yes, yes, no}, {O::orElse, O::andAlso}}, false},
          Row{{{no, yes, yes}, {O::andAlso, O::orElse}}, true},
          // Operators that do not fit leave the first pattern alone.
          Row{{{yes, no}, {}}, true}, Row{{{no, yes}, {O::orElse, O::orElse}}, false}})
        EXPECT_EQ(row.list.matches("abc"), row.expected) << row.list.patterns.size();
}

TEST(MatchRecord, letsAllAttributeCriteriaDecide) {
    SearchCriteria criteria;
    criteria.attributes = {{A::name, {{pattern(M::contains, "dawn")}, {}}},
                           {A::scene, {{pattern(M::equals, "13")}, {}}}};
    EXPECT_FALSE(matchRecord(shot(), criteria));
    criteria.attributes[1].patterns.patterns[0].text = "12A";
    EXPECT_TRUE(matchRecord(shot(), criteria));
}

TEST(MatchRecord, letsEmptyAttributesMatchWhenAllowed) {
    SearchCriteria criteria;
    criteria.attributes = {{A::notes, {{pattern(M::contains, "rain")}, {}}}};
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

TEST(RecordKind, followsTheLogType) {
    const std::vector<std::pair<eLogType, unsigned>> rows = {
        {kLogTypeSource, 1},         {kLogTypeEdit, 2},       {kLogTypeSpecial, 2},
        {kLogTypeSyncGhost, 4},      {kLogTypePrintGhost, 8}, {kLogTypeSubclip, 16},
        {kLogTypeClipSection, 1024}, {kLogTypeFileCopy, 1},   {kLogTypeNone, 0}};
    for (const auto& [type, kind] : rows)
        EXPECT_EQ(recordKindOf(type), kind) << type;
}

TEST(SearchCriteria, namesMethodsAndOperators) {
    for (int i = 0; i <= static_cast<int>(M::wholeWord); ++i) {
        const auto method = static_cast<M>(i);
        EXPECT_EQ(matchMethodFromString(getPersistableString(method)), method);
    }
    EXPECT_EQ(getPersistableString(eLogicalOperator::andNot), "AndNot");
    EXPECT_EQ(logicalOperatorFromString("Or"), eLogicalOperator::orElse);
    EXPECT_FALSE(matchMethodFromString("contains")) << "case matters";
    EXPECT_FALSE(logicalOperatorFromString(""));
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
        {"Attribute", ""},
        {"Attribute", "name\tContains"},
        {"Attribute", "name\tcontains\tx"},
        {"Attribute", "name\tContains\tx\tXor\tContains\ty"},
        {"Attribute", "name\tContains\tx\\"},
        {"Markers", ""},
        {"MarkerTypes", "1"},
        {"MarkerTypes", "1,x"},
        {"Later", "1"},
    };
    SearchCriteria criteria = fullCriteria();
    criteria.restoreFrom(pairs);
    EXPECT_TRUE(criteria == SearchCriteria());
}

} // namespace
