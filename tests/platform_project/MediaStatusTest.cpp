// Drives and presence of media.
#include "platform/project/MediaStatus.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

struct LocationCase {
    const char* location;
    const char* drive;
    const char* path;
};

class Locations : public testing::TestWithParam<LocationCase> {};

TEST_P(Locations, nameDriveAndPath) {
    const LocationCase& row = GetParam();
    EXPECT_EQ(DriveID::of(row.location).asString(), row.drive);
    EXPECT_EQ(cutroom::localPathOf(row.location), row.path);
    EXPECT_EQ(DriveID::fromString(row.drive), DriveID::of(row.location));
}

INSTANTIATE_TEST_SUITE_P(
    MediaStatus, Locations,
    testing::Values(
        LocationCase{"", "0", ""}, LocationCase{"a.mov", "0", "a.mov"},
        LocationCase{"/a.mov", "/", "/a.mov"},
        LocationCase{"/mnt/raid/a.mov", "/mnt/raid", "/mnt/raid/a.mov"},
        LocationCase{"/mnt//a.mov", "/", "/mnt//a.mov"},
        LocationCase{"/Volumes/Rushes 1/a.mov", "/Volumes/Rushes 1", "/Volumes/Rushes 1/a.mov"},
        LocationCase{"/media/ann/card/a.mov", "/media/ann/card", "/media/ann/card/a.mov"},
        LocationCase{"/media/ann", "/", "/media/ann"},
        LocationCase{"/run/media/ann/card/a", "/run/media/ann/card", "/run/media/ann/card/a"},
        LocationCase{"d:\\rushes\\a.mov", "D:", "d:\\rushes\\a.mov"},
        LocationCase{"file:///mnt/raid/a%20b.mov", "/mnt/raid", "/mnt/raid/a b.mov"},
        LocationCase{"file://localhost/a%4a", "/", "/aJ"}, LocationCase{"file:///a%zz", "0", ""},
        LocationCase{"file:///a%0", "0", ""}, LocationCase{"file:///a%00b", "0", ""},
        LocationCase{"file://nas/a", "0", ""},
        LocationCase{"https://host/a.mov", "https://host", ""}));

TEST(MediaStatus, remembersUntilToldToForget) {
    const cutroom::test::TempFolder folder;
    const std::string file = folder / "a.mov";
    MediaStatus& status = MediaStatus::instance();
    status.forgetAll();
    EXPECT_EQ(status.get(file), MediaStatus::State::absent);
    std::ofstream(file) << "x";
    EXPECT_EQ(status.get(file), MediaStatus::State::absent) << "remembered";
    EXPECT_EQ(status.get("file://" + file), MediaStatus::State::present);
    status.forget(file);
    EXPECT_EQ(status.get(file), MediaStatus::State::present);
    EXPECT_EQ(status.get("https://host/a.mov"), MediaStatus::State::unknown);
    EXPECT_EQ(status.size(), 2u);
}

} // namespace
