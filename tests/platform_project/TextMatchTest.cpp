// The text comparison of every search.
#include "platform/project/TextMatch.h"
#include "platform/project/TextArena.h"

#include <gmock/gmock.h>
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
    // For whole words only the first place in a field decides.
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

TEST(TextArena, squeezesOutWhatChangedRecordsLeaveBehind) {
    cutroom::TextArena arena;
    projdb::Record record;
    std::size_t most = 0;
    for (int shot = 0; shot < 20; ++shot) {
        record.setField("name", "Shot " + std::to_string(shot));
        arena.put(static_cast<cutroom::TextArena::Slot>(std::min(shot, 2)), record);
        record.setField("notes", std::string(shot == 0 ? 0 : 400'000, 'x'));
        most = std::max(most, arena.bytes());
    }
    EXPECT_LT(most, 2'000'000u);
    std::vector<cutroom::TextArena::Slot> found;
    for (cutroom::TextArena::Place place = 0; !arena.isEnd(place);)
        arena.search("shot 1", false, place, 1000, found);
    EXPECT_THAT(found, testing::ElementsAre(1, 2)); // "Shot 1", "Shot 19"
}

} // namespace
