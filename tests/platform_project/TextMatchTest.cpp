// The text comparison of every search.
#include "platform/project/TextMatch.h"
#include "platform/project/TextArena.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using Slot = cutroom::TextArena::Slot;

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

TEST(TextArena, squeezesOutWhatChangedRecordsLeaveBehind) {
    cutroom::TextArena arena;
    projdb::Record record;
    for (const Slot slot : {0u, 1u, 2u}) {
        record.setField("name", "Shot " + std::to_string(slot));
        arena.put(slot, record);
    }
    record.setField("notes", std::string(400'000, 'x'));
    std::size_t most = 0;
    for (int take = 0; take < 20; ++take) {
        record.setField("name", "Take " + std::to_string(take));
        arena.put(1, record);
        most = std::max(most, arena.bytes());
    }
    EXPECT_GE(arena.generation(), 5u);
    EXPECT_LT(most, 2'000'000u);
    const auto find = [&](const char* pattern) {
        std::vector<Slot> found;
        for (cutroom::TextArena::Place place = 0; !arena.isEnd(place);)
            arena.search(pattern, false, place, 1000, found);
        return found;
    };
    EXPECT_THAT(find("shot"), testing::UnorderedElementsAre(0, 2));
    EXPECT_THAT(find("take 19"), testing::ElementsAre(1));
    EXPECT_THAT(find("take 18"), testing::IsEmpty());
}

} // namespace
