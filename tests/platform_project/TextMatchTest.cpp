// The text comparison of every search.
#include "platform/project/TextMatch.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

struct CompareCase {
    const char* name;
    const char* text;
    const char* pattern;
    bool wholeWords;
    bool caseSensitive;
    bool expected;
};

class CompareText : public testing::TestWithParam<CompareCase> {};

TEST_P(CompareText, decides) {
    const CompareCase& row = GetParam();
    EXPECT_EQ(cutroom::compareText(row.text, row.pattern, row.wholeWords, row.caseSensitive),
              row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    TextMatch, CompareText,
    testing::Values(CompareCase{"inside", "concat", "cat", false, false, true},
                    CompareCase{"absent", "concat", "dog", false, false, false},
                    CompareCase{"longerThanText", "cat", "cats", false, false, false},
                    CompareCase{"caseBlind", "The CAT", "cAt", false, false, true},
                    CompareCase{"caseCounts", "The CAT", "cat", false, true, false},
                    CompareCase{"beyondAscii", "ÉCLAIR ΣΊΣΥΦΟΣ", "éclair σ", false, false, true},
                    CompareCase{"firstPlaceAloneDecides", "concat cat", "cat", true, false, false},
                    CompareCase{"beforeFullStop", "cat.", "cat", true, false, true},
                    CompareCase{"atTheEnd", "the cat", "cat", true, false, true},
                    CompareCase{"wholeText", "cat", "cat", true, false, true},
                    CompareCase{"plural", "cats", "cat", true, false, false},
                    CompareCase{"wideQuotes", "«cat»", "cat", true, false, true},
                    CompareCase{"wideLetterBefore", "écat", "cat", true, false, false},
                    CompareCase{"wideLetterAfter", "caté", "cat", true, false, false},
                    CompareCase{"emptyPattern", "cat", "", false, false, true},
                    CompareCase{"emptyText", "", "cat", false, false, false}),
    [](const auto& row) { return row.param.name; });

TEST(FindText, agreesWithThePlainSearch) {
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string text(random() % 300, ' ');
        for (char& c : text)
            c = static_cast<char>('a' + random() % 3);
        std::string pattern(1 + random() % 5, ' ');
        for (char& c : pattern)
            c = static_cast<char>('a' + random() % 3);
        const std::size_t from = random() % 305;
        ASSERT_EQ(cutroom::findText(text, pattern, from), text.find(pattern, from))
            << text << " | " << pattern << " | " << from;
    }
}

} // namespace
