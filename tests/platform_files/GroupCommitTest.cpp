#include "platform/files/GroupCommit.h"

#include "platform/files/ByteStream.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/FolderLock.h"
#include "tests/support/FaultyFiles.h"
#include "tests/support/PowerCutDisk.h"
#include "tests/support/Scale.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

using namespace cutroom;
using cutroom::test::FaultyFiles;
using cutroom::test::PowerCutDisk;
using cutroom::test::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using FileMap = std::map<std::string, std::string>;

class Installed {
public:
    explicit Installed(iFileSystem& files) : before_(installFileSystem(&files)) {}
    ~Installed() { installFileSystem(before_); }
    Installed(const Installed&) = delete;
    Installed& operator=(const Installed&) = delete;

private:
    iFileSystem* before_;
};

FileMap withoutBackups(const PowerCutDisk& disk) {
    FileMap files = disk.files();
    std::erase_if(files, [](const auto& file) { return file.first.ends_with(".bak"); });
    return files;
}

} // namespace

TEST(GroupCommit, PutsWritesAndRemovalsInPlaceOnDisk) {
    const TempFolder folder;
    ASSERT_TRUE(makeFolders(folder / "edits").ok());
    ASSERT_TRUE(writeFile(folder / "edits/a", "a0").ok());
    ASSERT_TRUE(writeFile(folder / "gone", "g0").ok());
    GroupCommit group(folder.path());
    ASSERT_TRUE(group.write("edits/a", "dropped").ok());
    ASSERT_TRUE(group.write("edits/a", "a1").ok());
    ASSERT_TRUE(group.write("edits/b", "b1").ok());
    ASSERT_TRUE(group.remove("gone").ok());
    ASSERT_TRUE(group.remove("never-there").ok());
    EXPECT_EQ(group.size(), 4u);
    EXPECT_EQ(readFile(folder / "edits/a").value(), "a0");
    ASSERT_TRUE(group.commit().ok());
    EXPECT_EQ(group.size(), 0u);
    EXPECT_THAT(systemFiles().list(folder / "edits").value(), ElementsAre("a", "a.bak", "b"));
    EXPECT_THAT(systemFiles().list(folder.path()).value(), ElementsAre("edits", "gone.bak"));
    EXPECT_EQ(readFile(folder / "edits/a").value(), "a1");
    EXPECT_EQ(readFile(folder / "edits/a.bak").value(), "a0");
}

TEST(GroupCommit, LeavesNothingWhenItIsGivenUp) {
    const TempFolder folder;
    {
        GroupCommit group(folder.path());
        ASSERT_TRUE(group.write("a", "a1").ok());
    }
    EXPECT_THAT(systemFiles().list(folder.path()).value(), ElementsAre());
}

TEST(GroupCommit, RefusesPathsThatLeadOutOfItsRoot) {
    const TempFolder folder;
    GroupCommit group(folder.path());
    for (const std::string path :
         {"", "/etc/x", "../x", "a/../../x", "a//b", "./a", "a/", "\xFF"}) {
        EXPECT_EQ(group.write(path, "x").code(), StatusCode::wrongUsage) << path;
        EXPECT_EQ(group.remove(path).code(), StatusCode::wrongUsage) << path;
    }
    EXPECT_TRUE(group.commit().ok());
}

TEST(GroupCommit, NeedsFewFlushesForManyFiles) {
    PowerCutDisk disk;
    FaultyFiles counted(disk);
    const Installed installed(counted);
    GroupCommit group("/p");
    for (int i = 0; i < 1000; ++i)
        ASSERT_TRUE(group.write(format("d%d/f%d", i % 3, i), "content").ok());
    ASSERT_TRUE(group.commit().ok());
    EXPECT_EQ(counted.count("flushAll"), 1);
    EXPECT_LE(counted.count("flush"), 20);
    EXPECT_EQ(disk.files().size(), 1000u);
}

TEST(GroupCommit, DoesNotPutBackWhatWasWrittenAfterTheDecision) {
    PowerCutDisk disk;
    FaultyFiles faulty(disk);
    const Installed installed(faulty);
    ASSERT_TRUE(writeFile("/p/a", "a0").ok());
    faulty.arm(-1, FaultyFiles::Span::once);
    for (long at = 0; !GroupCommit::pending("/p"); ++at) {
        GroupCommit group("/p");
        faulty.arm(at, FaultyFiles::Span::sameForEver);
        (void)group.write("a", "a1");
        (void)group.write("new", "n1");
        (void)group.commit();
        faulty.disarm();
    }
    ASSERT_TRUE(writeFile("/p/a", "a2").ok());
    ASSERT_TRUE(writeFile("/p/new", "n2").ok());
    ASSERT_TRUE(GroupCommit::recover("/p").ok());
    EXPECT_EQ(withoutBackups(disk), (FileMap{{"/p/a", "a2"}, {"/p/new", "n2"}}));
}

TEST(GroupCommit, ThatCannotCompleteAnEarlierOneLeavesItDecided) {
    PowerCutDisk disk;
    FaultyFiles faulty(disk);
    const Installed installed(faulty);
    ASSERT_TRUE(writeFile("/p/a", "a0").ok());
    for (long at = 0; !GroupCommit::pending("/p"); ++at) {
        GroupCommit group("/p");
        faulty.arm(at, FaultyFiles::Span::sameForEver);
        (void)group.write("a", "a1");
        (void)group.commit();
        faulty.disarm();
    }
    const PowerCutDisk decided = disk;
    int failed = 0;
    for (long at = 0, struck = 1; struck; ++at) {
        disk = decided;
        GroupCommit second("/p");
        ASSERT_TRUE(second.write("b", "b1").ok());
        faulty.arm(at, FaultyFiles::Span::once, "Input/output error");
        const bool saved = second.commit().ok();
        struck = faulty.struck();
        faulty.disarm();
        ASSERT_TRUE(GroupCommit::recover("/p").ok());
        const FileMap files = withoutBackups(disk);
        EXPECT_EQ(files.at("/p/a"), "a1") << at;
        EXPECT_EQ(files.size(), files.contains("/p/b") ? 2u : 1u) << at;
        EXPECT_TRUE(!saved || files.contains("/p/b")) << at;
        failed += saved ? 0 : 1;
    }
    EXPECT_GT(failed, 20);
}

TEST(GroupCommit, MovesADamagedOrForeignManifestAside) {
    ByteWriter outside; // well-formed, but of a file outside the root
    outside.varint(1);
    for (const char* text : {"../../victim", "x.1-0.tmp~", ""})
        outside.text(text);
    outside.varint(0);
    outside.u32(0);
    const std::string bad[] = {"", "CUTROOM commit 1 0 00000000\n", "noise",
                               CheckedFile::wrap("commit", 1, outside.bytes())};
    for (const std::string& manifest : bad) {
        const TempFolder folder;
        ASSERT_TRUE(writeFile(folder / "commit.manifest", manifest, Backup::none).ok());
        ASSERT_TRUE(writeFile(folder / "x.1-0.tmp~", "litter", Backup::none).ok());
        const Result<GroupCommit::Recovery> recovered = GroupCommit::recover(folder.path());
        ASSERT_TRUE(recovered.ok()) << manifest;
        EXPECT_EQ(recovered->damaged, folder / "commit.manifest.damaged");
        EXPECT_EQ(recovered->removed, 1);
        EXPECT_THAT(systemFiles().list(folder.path()).value(),
                    ElementsAre("commit.manifest.damaged"));
    }
}

// One write or group, cut off after a random operation; what is found is looked at after recovery.
class PowerCut : public testing::Test {
protected:
    // The share of cuts after which the content was neither `before` nor `after`.
    template <class Work> double tornShare(long cuts, const Work& work) {
        RecordProperty("cuts", std::to_string(cuts));
        std::mt19937 random(20240229);
        PowerCutDisk start;
        {
            const Installed installed(start);
            EXPECT_TRUE(writeFile("/p/a", before.at("/p/a"), Backup::none).ok());
            EXPECT_TRUE(writeFile("/p/e/b", before.at("/p/e/b"), Backup::none).ok());
        }
        start.settle();
        const std::size_t operations = countOperations(start, work);
        long torn = 0;
        for (long i = 0; i < cuts; ++i) {
            PowerCutDisk disk = start;
            FaultyFiles running(disk);
            running.arm(static_cast<long>(random() % (operations + 1)),
                        FaultyFiles::Span::allForEver);
            {
                const Installed installed(running);
                acknowledged = work();
            }
            PowerCutDisk found = disk.afterCut(random);
            const Installed installed(found);
            if (!GroupCommit::recover("/p").ok() || !whole(withoutBackups(found)))
                ++torn;
        }
        return static_cast<double>(torn) / static_cast<double>(cuts);
    }
    template <class Work> std::size_t countOperations(PowerCutDisk disk, const Work& work) {
        FaultyFiles counted(disk);
        const Installed installed(counted);
        EXPECT_TRUE(work());
        return counted.operations().size();
    }
    bool whole(const FileMap& files) const {
        return files == after || (files == before && !acknowledged);
    }

    const FileMap before{{"/p/a", std::string(3000, 'a')}, {"/p/e/b", std::string(2000, 'b')}};
    FileMap after = before;
    bool acknowledged = false;
};

TEST_F(PowerCut, NeverTearsASingleWrite) {
    after["/p/a"] = std::string(5000, 'A');
    EXPECT_EQ(tornShare(test::rounds(20'000, 500'000),
                        [&] { return writeFile("/p/a", after["/p/a"]).ok(); }),
              0);
}

TEST_F(PowerCut, NeverTearsAGroup) {
    after = {{"/p/a", std::string(5000, 'A')}, {"/p/e/c", std::string(100, 'C')}};
    EXPECT_EQ(tornShare(test::rounds(20'000, 500'000),
                        [&] {
                            GroupCommit group("/p");
                            return group.write("a", after["/p/a"]).ok() &&
                                   group.write("e/c", after["/p/e/c"]).ok() &&
                                   group.remove("e/b").ok() && group.commit().ok();
                        }),
              0);
}

TEST_F(PowerCut, NeverTearsALargeGroup) {
    for (int i = 0; i < 12; ++i)
        after[format("/p/e/%d", i)] = std::string(40, 'x');
    EXPECT_EQ(tornShare(test::rounds(5'000, 100'000),
                        [&] {
                            GroupCommit group("/p");
                            for (int i = 0; i < 12; ++i)
                                if (!group.write(format("e/%d", i), std::string(40, 'x')).ok())
                                    return false;
                            return group.commit().ok();
                        }),
              0);
}

TEST_F(PowerCut, TheHarnessCatchesWritersWithoutFlushAndInPlace) {
    after["/p/a"] = std::string(5000, 'A');
    const auto put = [&](const std::string& path, OpenMode mode) {
        iFileSystem& files = fileSystem();
        const auto file = files.open(path, mode);
        const bool written = file && files.write(*file, after["/p/a"].data(), 5000).ok();
        return written && files.close(*file).ok();
    };
    EXPECT_GT(tornShare(2000, [&] { return put("/p/a", OpenMode::readWrite); }), 0.1);
    EXPECT_GT(tornShare(2000,
                        [&] {
                            return put("/p/a.1-1.tmp~", OpenMode::createNew) &&
                                   fileSystem().rename("/p/a.1-1.tmp~", "/p/a").ok();
                        }),
              0.1);
}

TEST(FolderLock, KeepsASecondWriterOutUntilItGoes) {
    const TempFolder folder;
    {
        Result<FolderLock> first = FolderLock::take(folder.path());
        ASSERT_TRUE(first.ok());
        const FolderLock moved = std::move(*first);
        const Result<FolderLock> second = FolderLock::take(folder.path());
        EXPECT_EQ(second.status().code(), StatusCode::locked);
        EXPECT_EQ(second.status().file(), folder.path());
        EXPECT_EQ(second.status().message(),
                  "is open for writing in process " + std::to_string(::getpid()));
    }
    EXPECT_TRUE(FolderLock::take(folder.path()).ok());
    EXPECT_EQ(FolderLock::take(folder / "none").status().code(), StatusCode::notFound);
}

TEST(FolderLock, EndsWithTheProcessThatHeldIt) {
    const TempFolder folder;
    const pid_t child = ::fork();
    if (child == 0) {
        const Result<FolderLock> lock = FolderLock::take(folder.path());
        ::_exit(lock.ok() ? 7 : 1); // without unlocking
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(WEXITSTATUS(status), 7);
    EXPECT_TRUE(FolderLock::take(folder.path()).ok());
}
