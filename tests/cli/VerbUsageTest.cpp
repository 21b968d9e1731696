// Lines that fit, or do not fit, what `help` shows of a verb.
#include "cli/VerbUsage.h"
#include "platform/base/Strings.h"

#include <gtest/gtest.h>

namespace cutroom::cli {
namespace {

struct Line {
    const char* usage;
    const char* words;
    const char* refused; // the word that is named, and a part of the reason; null: it fits
    const char* why;
};

class VerbUsageOfLine : public testing::TestWithParam<Line> {};

TEST_P(VerbUsageOfLine, AcceptsOrNamesTheFirstWrongWord) {
    const Line& line = GetParam();
    std::vector<std::string> words = split(line.words, ' ');
    std::erase(words, "");
    const Status status = VerbUsage(line.usage).check("verb", words);
    EXPECT_EQ(status.ok(), line.refused == nullptr) << status.text();
    if (line.refused) {
        EXPECT_EQ(status.file(), line.refused);
        EXPECT_NE(status.text().find(line.why), std::string::npos) << status.text();
        EXPECT_EQ(status.code(), StatusCode::wrongUsage);
    }
}

constexpr const char* kMany = "one word too many";
constexpr const char* kUnknown = "not known here";
constexpr const char* kMissing = "a word is missing";

INSTANTIATE_TEST_SUITE_P(
    Lines, VerbUsageOfLine,
    testing::Values(Line{"", "", nullptr, ""}, Line{"", "x", "x", kMany},
                    Line{"NAME", "", "verb", kMissing}, Line{"NAME", "a b", "b", kMany},
                    Line{"on|off [quiet]", "off", nullptr, ""},
                    Line{"on|off [quiet]", "of", "of", kUnknown},
                    Line{"on|off [quiet]", "on quiet quiet", "quiet", kMany},
                    // any order, each once, but what is repeated
                    Line{"T [a] [b X] [c]", "1 c b 2 a", nullptr, ""},
                    Line{"T [a] [b X] [c]", "1 c b", "verb", kMissing},
                    Line{"T [a] [b X] [c]", "1 a a", "a", kUnknown},
                    Line{"T [f K V] ... [n]", "1 f a b n f c d", nullptr, ""},
                    Line{"T [f K V] ... [n]", "1 f a b f c", "verb", kMissing},
                    // repetition and groups
                    Line{"NAME ...", "a b c", nullptr, ""}, Line{"NAME ...", "", "verb", kMissing},
                    Line{"[NAME ...]", "", nullptr, ""},
                    Line{"add (CH T) ... | clear", "add a 1 b 2", nullptr, ""},
                    Line{"add (CH T) ... | clear", "add a 1 b", "verb", kMissing},
                    Line{"add (CH T) ... | clear", "clear a", "a", kMany},
                    // either side
                    Line{"[N level V | load FILE]", "", nullptr, ""},
                    Line{"[N level V | load FILE]", "load x", nullptr, ""},
                    Line{"[N level V | load FILE]", "load x y", "y", kMany},
                    Line{"[N level V | load FILE]", "1 level 2 3", "3", kMany},
                    Line{"[KEY [VALUE|none]]", "k none", nullptr, ""},
                    Line{"[KEY [VALUE|none]]", "k v w", "w", kMany}));

} // namespace
} // namespace cutroom::cli
