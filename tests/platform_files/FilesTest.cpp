#include "platform/files/Files.h"
#include "platform/files/Staging.h"
#include "platform/files/TextFile.h"
#include "tests/platform_files/Disks.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <unistd.h>

using namespace cutroom;
using cutroom::test::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

bool disksHaveLinks = true;

void put(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

} // namespace

// Hides the system's function, as if the disk knew no hard links.
extern "C" int link(const char* from, const char* to) noexcept {
    errno = EPERM;
    return disksHaveLinks ? linkat(AT_FDCWD, from, AT_FDCWD, to, 0) : -1;
}

TEST(Paths, AreTakenApartAtTheLastSlashAndPoint) {
    const struct {
        std::string path, folder, name, extension;
    } rows[] = {
        {"a/b/c.txt", "a/b", "c.txt", "txt"},
        {"c.txt", ".", "c.txt", "txt"},
        {"/c", "/", "c", ""},
        {"a/.hidden", "a", ".hidden", ""},
        {"a.b/c", "a.b", "c", ""},
        {"a/c.tar.gz", "a", "c.tar.gz", "gz"},
        {"a/", "a", "", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(folderOf(row.path), row.folder) << row.path;
        EXPECT_EQ(nameOf(row.path), row.name) << row.path;
        EXPECT_EQ(extensionOf(row.path), row.extension) << row.path;
    }
    EXPECT_EQ(joinPath("a", "b"), "a/b");
    EXPECT_EQ(joinPath("a/", "b"), "a/b");
    EXPECT_EQ(joinPath("a", "/b"), "/b");
    EXPECT_EQ(joinPath("", "b"), "b");
}

TEST(Paths, ThatCannotNameAFileAreRefusedBeforeAnythingIsDone) {
    const std::string bad[] = {"", std::string("a\0b", 3), "caf\xE9.txt", "\xED\xA0\x80"};
    for (const std::string& path : bad) {
        EXPECT_EQ(readFile(path).status().code(), StatusCode::wrongUsage) << path;
        EXPECT_EQ(writeFile(path, "x").code(), StatusCode::wrongUsage) << path;
        EXPECT_EQ(makeFolders(path).code(), StatusCode::wrongUsage) << path;
        EXPECT_TRUE(isUtf8(writeFile(path, "x").text())) << path;
    }
    EXPECT_EQ(narrowPath(L"\xD800").status().code(), StatusCode::wrongUsage);
    EXPECT_EQ(narrowPath(L"Wörter/\x1F3AC").value(), "Wörter/🎬");
}

TEST(WriteFile, ReplacesTheContentAndKeepsOneGenerationBefore) {
    const TempFolder folder;
    const std::string path = folder / "a.txt";
    for (const char* content : {"one", "two", "three"})
        ASSERT_TRUE(writeFile(path, content).ok());
    EXPECT_EQ(readFile(path).value(), "three");
    EXPECT_EQ(readFile(path + ".bak").value(), "two");
    ASSERT_TRUE(writeFile(path, "four", Backup::none).ok());
    EXPECT_EQ(readFile(path + ".bak").value(), "two");
    // A write that ended between backup and content left both names to one file.
    std::filesystem::remove(path + ".bak");
    std::filesystem::create_hard_link(path, path + ".bak");
    ASSERT_TRUE(writeFile(path, "five").ok());
    EXPECT_EQ(readFile(path + ".bak").value(), "four");
    EXPECT_THAT(systemFiles().list(folder.path()).value(), ElementsAre("a.txt", "a.txt.bak"));
}

TEST(WriteFile, CopiesTheGenerationBeforeWhereADiskHasNoLinks) {
    const TempFolder folder;
    const std::string long1(100'000, '1'), path = folder / "a.txt";
    disksHaveLinks = false;
    for (const std::string& content : {std::string("0"), long1, std::string("2")})
        EXPECT_TRUE(writeFile(path, content).ok());
    EXPECT_EQ(readFile(path).value(), "2");
    EXPECT_EQ(systemFiles().link(folder.path(), folder / "out").code(), StatusCode::inputOutput);
    EXPECT_FALSE(systemFiles().link(path, path + ".bak").ok()) << "one that is there stays";
    disksHaveLinks = true;
    EXPECT_EQ(readFile(path + ".bak").value(), long1);
    EXPECT_THAT(systemFiles().list(folder.path()).value(), ElementsAre("a.txt", "a.txt.bak"));
}

TEST(ReadFile, TellsWhyItCannot) {
    const TempFolder folder;
    put(folder / "large", std::string(1000, 'x'));
    const struct {
        const char* name;
        StatusCode code;
        const char* reason;
    } rows[] = {
        {"none", StatusCode::notFound, "No such file"},
        {"large/below", StatusCode::notFound, "Not a directory"},
        {".", StatusCode::inputOutput, "is a folder"},
        {"large", StatusCode::damaged, "larger than 999 bytes"},
    };
    for (const auto& row : rows) {
        const Result<std::string> read = readFile(folder / row.name, 999);
        EXPECT_EQ(read.status().code(), row.code) << row.name;
        EXPECT_EQ(read.status().file(), folder / row.name);
        EXPECT_THAT(read.status().message(), HasSubstr(row.reason));
    }
    EXPECT_EQ(readFile(folder / "large", 1000)->size(), 1000u);
    EXPECT_THAT(readFile("/proc/self/status").value(), HasSubstr("Pid:")); // of unknown size
}

TEST(ReadFile, TakesOneGenerationWholeWhenAnotherIsSavedMeanwhile) {
    struct SavedAgain final : test::PowerCutDisk {
        Result<Handle> open(const std::string& path, OpenMode mode) override {
            if (mode == OpenMode::read)
                (void)rename("/p/next", path);
            return PowerCutDisk::open(path, mode);
        }
    } disk;
    const test::Installed installed(disk);
    ASSERT_TRUE(writeFile("/p/file", "short", Backup::none).ok());
    ASSERT_TRUE(writeFile("/p/next", "a longer one", Backup::none).ok());
    EXPECT_EQ(*readFile("/p/file"), "a longer one");
}

TEST(Folders, AreMadeWithThoseAboveAndListedWithoutLitter) {
    const TempFolder folder;
    const std::string deep = folder / "x/y/z";
    ASSERT_TRUE(makeFolders(deep).ok());
    ASSERT_TRUE(makeFolders(deep).ok());
    for (const char* name :
         {"b.edit", "a.edit", "._a.edit", "c.txt", "d.edit.1f-0.tmp~", "e.edit.1-0.old~",
          "mine.tmp~", "e.g-1.old~", "f.beef.tmp~", "-.-.old~"})
        put(deep + "/" + name, "x");
    put(deep + "/\xFF.edit", "x");
    ASSERT_TRUE(makeFolders(deep + "/f.edit").ok());
    EXPECT_THAT(listFiles(deep, ".edit").value(), ElementsAre("a.edit", "b.edit"));
    EXPECT_THAT(listFiles(deep + "/none").value(), ElementsAre());
    EXPECT_EQ(removeTemporaries(deep).value(), 2) << "other programs' files stay";
    EXPECT_EQ(removeTemporaries(deep).value(), 0);
    EXPECT_TRUE(staging::flushFolder(systemFiles(), "/proc").ok())
        << "it knows no flush of folders";
    EXPECT_THAT(makeFolders(deep + "/c.txt/g").message(), HasSubstr("a file where a folder"));
}

TEST(Files, AreMovedCopiedAndRemoved) {
    const TempFolder folder;
    put(folder / "a", "1");
    ASSERT_TRUE(copyFile(folder / "a", folder / "b").ok());
    ASSERT_TRUE(moveFile(folder / "b", folder / "c").ok());
    EXPECT_EQ(moveFile(folder / "b", folder / "c").code(), StatusCode::notFound);
    for (const char* aside : {"c.damaged", "c.damaged.2", "c.damaged.3"}) {
        put(folder / "c", aside);
        EXPECT_EQ(moveAside(folder / "c").value(), folder / aside);
        EXPECT_EQ(readFile(folder / aside).value(), aside);
    }
    EXPECT_TRUE(removeFile(folder / "a").ok());
    EXPECT_TRUE(removeFile(folder / "a").ok());
    EXPECT_FALSE(fileExists(folder / "a"));
}

TEST(Files, OutputGoesThroughLinksAndIntoDevices) {
    const TempFolder folder;
    std::string accents = "x"; // no place for a name to be cut at is between two of its bytes
    while (accents.size() < 255)
        accents += "\xC3\xA9";
    for (const std::string& name : {std::string(251, 'n') + ".txt", accents})
        EXPECT_TRUE(writeOutput(folder / name, "as long as names can be").ok());
    put(folder / "target", "old");
    std::filesystem::create_symlink("target", folder / "link");
    std::filesystem::create_hard_link(folder / "target", folder / "copy");
    EXPECT_TRUE(writeOutput(folder / "link", "new").ok());
    EXPECT_EQ(readFile(folder / "copy").value(), "old"); // written beside, not over it
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(readFile(folder / "target").value(), "new");
    EXPECT_FALSE(fileExists(folder / "target.bak"));
    std::filesystem::create_symlink("/dev/full", folder / "full");
    EXPECT_EQ(writeOutput(folder / "full", "text").code(), StatusCode::inputOutput);
    EXPECT_EQ(writeOutput(folder / ".", "text").code(), StatusCode::inputOutput);
}

TEST(TextFile, ReadsStrictUtf8AndNamesTheLine) {
    const TempFolder folder;
    const struct {
        std::string content;
        bool sound;
        long line;
        std::string text;
    } rows[] = {
        {"", true, 0, ""},
        {"\xEF\xBB\xBFgr\xC3\xBC\xC3\x9F\r\n", true, 0, "gr\xC3\xBC\xC3\x9F\r\n"},
        {"one\ntwo\xFF\nthree", false, 2, ""},
        {"one\ntwo\n\xC3", false, 3, ""},
        {std::string("one\n\0two", 8), false, 2, ""},
        {"\xC3\n", false, 1, ""},
    };
    for (const auto& row : rows) {
        put(folder / "t", row.content);
        const Result<std::string> read = TextFile::load(folder / "t");
        ASSERT_EQ(read.ok(), row.sound) << row.content;
        EXPECT_EQ(read.status().line(), row.line) << row.content;
        if (read) {
            EXPECT_EQ(*read, row.text);
        }
    }
    EXPECT_EQ(TextFile::save(folder / "u", "\xFF").code(), StatusCode::wrongUsage);
    EXPECT_FALSE(fileExists(folder / "u"));
    ASSERT_TRUE(TextFile::save(toWide(folder / "ü.txt"), "text").ok());
    EXPECT_EQ(TextFile::load(toWide(folder / "ü.txt")).value(), "text");
}
