// Drives and presence of media.
#include "platform/project/MediaStatus.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(MediaStatus, LocationsNameDriveAndPath) {
    struct Row {
        const char* location;
        const char* drive;
        const char* path;
    };
    for (const Row& row :
         {Row{"", "0", ""},
          Row{"a.mov", "0", "a.mov"},
          Row{"/a.mov", "/", "/a.mov"},
          Row{"/mnt/raid/a.mov", "/mnt/raid", "/mnt/raid/a.mov"},
          Row{"/mnt//a.mov", "/", "/mnt//a.mov"},
          Row{"/Volumes/Rushes 1/a.mov", "/Volumes/Rushes 1", "/Volumes/Rushes 1/a.mov"},
          Row{"/media/ann/card/a.mov", "/media/ann/card", "/media/ann/card/a.mov"},
          Row{"/media/ann", "/", "/media/ann"},
          Row{"/run/media/ann/card/a", "/run/media/ann/card", "/run/media/ann/card/a"},
          Row{"d:\\rushes\\a.mov", "D:", "d:\\rushes\\a.mov"},
          Row{"file:///mnt/raid/a%20b.mov", "/mnt/raid", "/mnt/raid/a b.mov"},
          Row{"file://localhost/%4a%4A", "/", "/JJ"},
          Row{"file:///a%zz", "0", ""},
          Row{"file:///a%0", "0", ""},
          Row{"file:///a%00b", "0", ""},
          Row{"file://nas/a", "0", ""},
          Row{"https://host/a.mov", "https://host", ""},
          Row{"s3+x-y.z://host/a", "s3+x-y.z://host", ""},
          Row{"night 2://a", "0", "night 2://a"},
          Row{"2s://a", "0", "2s://a"}}) {
        SCOPED_TRACE(row.location);
        EXPECT_EQ(DriveID::of(row.location).asString(), row.drive);
        EXPECT_EQ(cutroom::localPathOf(row.location), row.path);
        EXPECT_EQ(DriveID::fromString(row.drive), DriveID::of(row.location));
    }
}

TEST(MediaStatus, remembersUntilToldToForget) {
    const cutroom::test::TempFolder folder;
    const std::string file = folder / "a.mov";
    MediaStatus& status = MediaStatus::instance();
    status.forgetAll();
    EXPECT_EQ(status.get(file), MediaStatus::State::absent);
    cutroom::test::putBytes(file, "x");
    EXPECT_EQ(status.get(file), MediaStatus::State::absent) << "remembered";
    EXPECT_EQ(status.get("file://" + file), MediaStatus::State::present);
    status.forget(file);
    EXPECT_EQ(status.get(file), MediaStatus::State::present);
    EXPECT_EQ(status.get("https://host/a.mov"), MediaStatus::State::unknown);
    EXPECT_EQ(status.size(), 2u);
}

} // namespace
