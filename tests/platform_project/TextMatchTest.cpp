// The text comparison of every search.
#include "platform/project/TextMatch.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

TEST(CompareText, decides) {
    struct Row {
        const char* text;
        const char* pattern;
        bool wholeWords;
        bool caseSensitive;
        bool expected;
    };
    // As a whole word the first place alone decides.
    for (const Row& row :
         {Row{"concat", "cat", false, false, true}, Row{"concat", "dog", false, false, false},
          Row{"cat", "cats", false, false, false}, Row{"The CAT", "cAt", false, false, true},
          Row{"The CAT", "cat", false, true, false},
          Row{"ÉCLAIR ΣΊΣΥΦΟΣ", "éclair σ", false, false, true},
          Row{"concat cat", "cat", true, false, false}, Row{"cat.", "cat", true, false, true},
          Row{"the cat", "cat", true, false, true}, Row{"cat", "cat", true, false, true},
          Row{"cats", "cat", true, false, false}, Row{"«cat»", "cat", true, false, true},
          Row{"écat", "cat", true, false, false}, Row{"caté", "cat", true, false, false},
          Row{"cat", "", false, false, true}, Row{"", "cat", false, false, false}})
        EXPECT_EQ(cutroom::compareText(row.text, row.pattern, row.wholeWords, row.caseSensitive),
                  row.expected)
            << row.text << " | " << row.pattern;
}

TEST(FindText, agreesWithThePlainSearch) {
    std::mt19937 random(7);
    const auto anyText = [&](std::size_t size) {
        std::string text(size, ' ');
        for (char& c : text)
            c = static_cast<char>('a' + random() % 3);
        return text;
    };
    for (int round = 0; round < 3000; ++round) {
        const std::string text = anyText(random() % 300);
        const std::string pattern = anyText(1 + random() % 5);
        const std::size_t from = random() % 305;
        ASSERT_EQ(cutroom::findText(text, pattern, from), text.find(pattern, from))
            << text << " | " << pattern << " | " << from;
    }
}

} // namespace
