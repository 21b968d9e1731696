#include "cli/Command.h"

#include <gtest/gtest.h>

namespace cutroom::cli {
namespace {

TEST(OneLine, HoldsNothingThatMovesTheCursor) {
    const struct {
        std::string text, dropped, kept; // without tabs, and with them
    } rows[] = {
        {"plain \xC3\xA9", "plain \xC3\xA9", "plain \xC3\xA9"},
        {"a\tb\r\nc", "a b  c", "a\tb  c"},
        {std::string("\x1B[2J\x7F\0", 6), " [2J  ", " [2J  "},
        {"\xC2\x80"
         "a\xC2\x9F",
         " a ", " a "}, // U+0080 to U+009F
        {"\xC2\xA0"
         "a\xC2",
         "\xC2\xA0"
         "a\xC2",
         "\xC2\xA0"
         "a\xC2"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(oneLine(row.text), row.dropped);
        EXPECT_EQ(oneLine(row.text, Tabs::keep), row.kept);
    }
}

} // namespace
} // namespace cutroom::cli
