#include "platform/files/Files.h"
#include "platform/host/Host.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/prefs/ShutdownState.h"
#include "tests/support/FaultyFiles.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutroom;
using cutroom::test::FaultyFiles;
using cutroom::test::TempFolder;
using Preferences = EditorPreferences;

namespace {

constexpr const char* kMarks = "Behaviour : Advanced marks";

} // namespace

class PreferencesTest : public testing::Test {
protected:
    void endLife() {
        Host::uninstall();
        Host::install({});
    }
    void TearDown() override { Host::uninstall(); }

    const TempFolder folder;
    const std::string path = folder / "preferences.ini";
    const bool installed = (Host::install({}), true);
};

TEST_F(PreferencesTest, OfEveryTypeOutliveTheProcess) {
    ASSERT_TRUE(Preferences::open(path).ok());
    Preferences::setPreference(kMarks, true);
    Preferences::setPreference("Multicam : concurrent limit", std::uint16_t{65535});
    Preferences::setPreference("Transitions stops", -7);
    Preferences::setPreference("length", 0.1);
    Preferences::setPreference("Last transition", "=[wipe]; 'x'\n");
    Preferences::setPreference("gone", "x");
    Preferences::removePreference("gone");
    endLife();
    EXPECT_FALSE(Preferences::getPreference(kMarks, false)); // no file is open yet
    ASSERT_TRUE(Preferences::open(path).ok());
    EXPECT_TRUE(Preferences::getPreference(kMarks, false));
    EXPECT_EQ(Preferences::getPreference("Multicam : concurrent limit", std::uint16_t{0}), 65535);
    EXPECT_EQ(Preferences::getPreference("Transitions stops", 0), -7);
    EXPECT_EQ(Preferences::getPreference("length", 1.0), 0.1);
    EXPECT_EQ(Preferences::getPreference("Last transition", ""), "=[wipe]; 'x'\n");
    EXPECT_EQ(Preferences::getPreference("gone", std::string("default")), "default");
}

TEST_F(PreferencesTest, ThatAreNoValueOfTheTypeGiveTheDefault) {
    struct Row {
        const char* text;
        bool flag;
        int whole;
        std::uint16_t small;
        double real;
    };
    for (const Row& row :
         {Row{"", true, 5, 6, 7.5}, Row{"true", true, 5, 6, 7.5}, Row{"0", false, 0, 0, 0},
          Row{"1.5", true, 5, 6, 1.5}, Row{"65536", true, 65536, 6, 65536},
          Row{"-1", true, -1, 6, -1}, Row{"2147483648", true, 5, 6, 2147483648.0},
          Row{"12 ", true, 5, 6, 7.5}, Row{"1e400", true, 5, 6, 7.5}}) {
        Preferences::setPreference("key", row.text);
        EXPECT_EQ(Preferences::getPreference("key", true), row.flag) << row.text;
        EXPECT_EQ(Preferences::getPreference("key", 5), row.whole) << row.text;
        EXPECT_EQ(Preferences::getPreference("key", std::uint16_t{6}), row.small) << row.text;
        EXPECT_EQ(Preferences::getPreference("key", 7.5), row.real) << row.text;
        EXPECT_EQ(Preferences::getPreference("key", "none"), row.text);
    }
}

TEST_F(PreferencesTest, AreWrittenOnlyWhenSomethingChanged) {
    ASSERT_TRUE(Preferences::open(path).ok());
    Preferences::setPreference("a", 1);
    ASSERT_TRUE(Preferences::flush().ok());
    Preferences::setPreference("a", 1);
    Preferences::removePreference("b");
    EXPECT_FALSE(Preferences::isDirty());
    FaultyFiles counted(systemFiles());
    installFileSystem(&counted);
    EXPECT_TRUE(Preferences::flush().ok());
    EXPECT_THAT(counted.operations(), testing::IsEmpty());
    Preferences::setPreference("a", 2);
    counted.arm(2, FaultyFiles::Span::once);
    EXPECT_EQ(Preferences::flush().code(), StatusCode::inputOutput);
    EXPECT_TRUE(Preferences::isDirty());
    counted.disarm();
    EXPECT_TRUE(Preferences::flush().ok());
    installFileSystem(nullptr);
    EXPECT_THAT(readFile(path).value(), testing::HasSubstr("a = 2\n"));
}

TEST_F(PreferencesTest, CountTheirChanges) {
    std::uint64_t last = Preferences::changeCount();
    const auto grew = [&] {
        const std::uint64_t before = std::exchange(last, Preferences::changeCount());
        return last > before;
    };
    ASSERT_TRUE(Preferences::open(path).ok());
    EXPECT_TRUE(grew());
    Preferences::setPreference("a", 1);
    EXPECT_TRUE(grew());
    Preferences::setPreference("a", 1);
    Preferences::removePreference("b");
    EXPECT_FALSE(grew());
    Preferences::removePreference("a");
    EXPECT_TRUE(grew());
    endLife();
    EXPECT_TRUE(grew());
}

TEST_F(PreferencesTest, InADamagedFileAreNeverOverwritten) {
    const std::string damaged = "; cutroom ini 1\n[preferences]\na = 1\n; checksum 00000000\n";
    ASSERT_TRUE(writeFile(path, damaged).ok());
    const Status status = Preferences::open(path);
    EXPECT_EQ(status.code(), StatusCode::damaged);
    EXPECT_EQ(status.file(), path);
    EXPECT_EQ(Preferences::getPreference("a", 0), 0);
    Preferences::setPreference("a", 3);
    EXPECT_TRUE(Preferences::flush().ok());
    endLife();
    EXPECT_EQ(readFile(path).value(), damaged);
}

TEST_F(PreferencesTest, ShutdownIsToldUntilTheLifeEnds) {
    ShutdownState::setExiting();
    EXPECT_TRUE(ShutdownState::isExiting());
    endLife();
    EXPECT_FALSE(ShutdownState::isExiting());
}
