// Lines that fit, or do not fit, what `help` shows of a verb.
#include "cli/VerbUsage.h"
#include "platform/base/Strings.h"

#include <gtest/gtest.h>

namespace cutroom::cli {
namespace {

constexpr const char* kMany = "one word too many";
constexpr const char* kUnknown = "not known here";
constexpr const char* kMissing = "a word is missing";

TEST(VerbUsageOfLine, AcceptsOrNamesTheFirstWrongWord) {
    const struct {
        const char* usage;
        const char* words;
        const char* refused = nullptr; // the word that is named, and a part of the reason
        const char* why = "";
    } lines[] = {
        {"", ""},
        {"", "x", "x", kMany},
        {"NAME", "", "verb", kMissing},
        {"NAME", "a b", "b", kMany},
        {"on|off [quiet]", "off"},
        {"on|off [quiet]", "of", "of", kUnknown},
        {"on|off [quiet]", "on quiet quiet", "quiet", kMany},
        // any order, each once, but what is repeated
        {"T [a] [b X] [c]", "1 c b 2 a"},
        {"T [a] [b X] [c]", "1 c b", "verb", kMissing},
        {"T [a] [b X] [c]", "1 a a", "a", kUnknown},
        {"T [f K V] ... [n]", "1 f a b n f c d"},
        {"T [f K V] ... [n]", "1 f a b f c", "verb", kMissing},
        // repetition and groups
        {"NAME ...", "a b c"},
        {"NAME ...", "", "verb", kMissing},
        {"[NAME ...]", ""},
        {"add (CH T) ... | clear", "add a 1 b 2"},
        {"add (CH T) ... | clear", "add a 1 b", "verb", kMissing},
        {"add (CH T) ... | clear", "clear a", "a", kMany},
        // either side
        {"[N level V | load FILE]", ""},
        {"[N level V | load FILE]", "load x"},
        {"[N level V | load FILE]", "load x y", "y", kMany},
        {"[N level V | load FILE]", "1 level 2 3", "3", kMany},
        {"[KEY [VALUE|none]]", "k none"},
        {"[KEY [VALUE|none]]", "k v w", "w", kMany},
    };
    for (const auto& line : lines) {
        SCOPED_TRACE(std::string(line.usage) + ": " + line.words);
        std::vector<std::string> words = split(line.words, ' ');
        std::erase(words, "");
        const Status status = VerbUsage(line.usage).check("verb", words);
        EXPECT_EQ(status.ok(), line.refused == nullptr) << status.text();
        EXPECT_EQ(status.file(), line.refused ? line.refused : "");
        EXPECT_NE(status.text().find(line.why), std::string::npos) << status.text();
        EXPECT_TRUE(status.ok() || status.code() == StatusCode::wrongUsage);
    }
}

} // namespace
} // namespace cutroom::cli
