#include "platform/files/KvIniFile.h"

#include "platform/files/Files.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

using namespace cutroom;
using cutroom::test::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

KvIniFile sample() {
    KvIniFile ini;
    ini.set("", "top", "first");
    ini.set("Mix", "Level : 1", "0.5");
    ini.setDouble("Mix", "double", 1234.5);
    ini.setInt("Mix", "int", -12);
    ini.setBool("Other [x]", "flag=", true);
    ini.set("Other [x]", "text", "  two\nlines\t\\ and ;#=[] ü ");
    return ini;
}

} // namespace

TEST(IniFile, RoundTripsAnyTextThroughAFile) {
    const TempFolder folder;
    KvIniFile saved(toWide(folder / "mix.ini"));
    ASSERT_TRUE(saved.parse(sample().text(), "f").ok());
    ASSERT_TRUE(saved.save());
    KvIniFile loaded(folder / "mix.ini");
    ASSERT_TRUE(loaded.load()) << loaded.status().text();
    EXPECT_EQ(loaded.text(), sample().text());
    EXPECT_THAT(loaded.sections(), ElementsAre("", "Mix", "Other [x]"));
    EXPECT_THAT(loaded.keys("Mix"), ElementsAre("Level : 1", "double", "int"));
    EXPECT_EQ(loaded.getText("", "top"), "first");
    EXPECT_EQ(loaded.getDouble("Mix", "double"), 1234.5);
    EXPECT_EQ(loaded.getInt("Mix", "int"), -12);
    EXPECT_TRUE(loaded.getBool("Other [x]", "flag="));
    EXPECT_EQ(loaded.getText("Other [x]", "text"), "  two\nlines\t\\ and ;#=[] ü ");
}

TEST(IniFile, FallsBackOnWhatIsMissingOrOfAnotherKind) {
    KvIniFile ini = sample();
    EXPECT_EQ(ini.get("None", "top"), std::nullopt);
    EXPECT_EQ(ini.getInt("Mix", "double", 7), 7);
    EXPECT_EQ(ini.getDouble("", "top", 2.5), 2.5);
    EXPECT_TRUE(ini.getBool("", "top", true));
    for (const char* word : {"true", "YES", "1", "False", "no", "0"}) {
        const bool yes = std::string_view("tY1").find(word[0]) != std::string_view::npos;
        ini.set("", "top", word);
        EXPECT_EQ(ini.getBool("", "top", !yes), yes) << word;
    }
    ini.remove("Mix", "double");
    ini.set("Mix", "int", "\xFF");
    EXPECT_EQ(ini.getText("Mix", "int"), "\xEF\xBF\xBD");
    EXPECT_THAT(ini.keys("Mix"), ElementsAre("Level : 1", "int"));
    ini.removeSection("Mix");
    EXPECT_THAT(ini.keys("Mix"), ElementsAre());
}

TEST(IniFile, IsReadAsWrittenByHand) {
    const char* const text = "# comment\r\n\r\n[ A ]\r\n key =  value # not a comment\r\nb=\n"
                             "[B]\n[ A ]\nc = yes";
    KvIniFile ini;
    ASSERT_TRUE(ini.parse(text, "f").ok());
    EXPECT_THAT(ini.sections(), ElementsAre(" A ", "B"));
    EXPECT_EQ(ini.get(" A ", "key"), "value # not a comment");
    EXPECT_EQ(ini.get(" A ", "b"), "");
    EXPECT_TRUE(ini.getBool(" A ", "c"));
}

TEST(IniFile, NamesTheLineThatIsWrongAndKeepsItsContent) {
    const struct {
        std::string text;
        long line;
        const char* reason;
    } rows[] = {
        {"", 1, "neither a section nor a key"},
        {"; only a comment\n", 1, "neither a section nor a key"},
        {"[A]\nword\n", 2, "neither a section nor a key with a value"},
        {"[A\n", 1, "no section"},
        {"[A]x\n", 1, "no section"},
        {"a=1\nb=\\q\n", 2, "unknown escape"},
        {"a=\\", 1, "unknown escape"},
        {"a=\\xff", 1, "unknown escape"},
        {"a=1\n[A]\na=2\na=3\n", 4, "the key \"a\" stands twice"},
        {"; cutroom ini 1\na=1\n; checksum 00000000\n", 3, "checksum"},
    };
    for (const auto& row : rows) {
        KvIniFile ini = sample();
        const Status status = ini.parse(row.text, "f.ini");
        EXPECT_EQ(status.code(), StatusCode::damaged) << row.text;
        EXPECT_EQ(status.line(), row.line) << row.text;
        EXPECT_THAT(status.message(), HasSubstr(row.reason)) << row.text;
        EXPECT_EQ(ini.text(), sample().text());
    }
}

TEST(IniFile, OfALaterVersionIsRefusedAndOfTheFirstLoads) {
    const std::string path = CUTROOM_TEST_DATA "/formats/ini-1.ini";
    KvIniFile ini(path);
    ASSERT_TRUE(ini.load()) << ini.status().text();
    EXPECT_EQ(ini.text(), sample().text());
    EXPECT_EQ(readFile(path).value(), sample().text());
    const std::string later = "; cutroom ini 2\na = 1\n; checksum 6678a524\n";
    EXPECT_EQ(KvIniFile().parse(later, "f").message(), "was written by a later version");
}

TEST(IniFile, NoticesEveryTruncationAndFlippedBit) {
    const std::string text = sample().text();
    const auto refused = [](const std::string& damaged) {
        const Status status = KvIniFile().parse(damaged, "f");
        return status.code() == StatusCode::damaged && status.line() > 0;
    };
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::string flipped = text;
        flipped[at] = static_cast<char>(flipped[at] ^ (1 << (at % 8)));
        EXPECT_TRUE(refused(flipped) && refused(text.substr(0, at))) << at;
    }
    const TempFolder folder;
    ASSERT_TRUE(writeFile(folder / "x.ini", "noise").ok());
    KvIniFile ini(folder / "x.ini");
    EXPECT_FALSE(ini.load());
    EXPECT_EQ(ini.status().file(), folder / "x.ini");
}

TEST(IniFileProperty, AnyTextsComeBack) {
    using Entry = std::tuple<std::string, std::string, std::string>;
    EXPECT_TRUE(rc::check([](const std::vector<Entry>& entries) {
        const auto sound = [](const std::string& text) { return toUtf8(toWide(text)); };
        KvIniFile ini;
        std::map<std::pair<std::string, std::string>, std::string> expected;
        for (const auto& [section, key, value] : entries) {
            ini.set(section, key, value);
            expected[{sound(section), sound(key)}] = sound(value);
        }
        KvIniFile again;
        RC_ASSERT(again.parse(ini.text(), "f").ok());
        for (const auto& [name, value] : expected)
            RC_ASSERT(again.get(name.first, name.second) == value);
        RC_ASSERT(again.text() == ini.text());
    }));
}
