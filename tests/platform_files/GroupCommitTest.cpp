#include "platform/files/GroupCommit.h"

#include "platform/files/ByteStream.h"
#include "platform/files/CheckedFile.h"
#include "tests/platform_files/Disks.h"
#include "tests/support/Scale.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutroom;
using namespace cutroom::test;
using testing::ElementsAre;

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
    Bench bench({});
    GroupCommit group("/p");
    for (int i = 0; i < 1000; ++i)
        ASSERT_TRUE(group.write(format("d%d/f%d", i % 3, i), "content").ok());
    ASSERT_TRUE(group.commit().ok());
    EXPECT_EQ(bench.faulty.count("flushAll"), 1);
    EXPECT_LE(bench.faulty.count("flush"), 20);
    EXPECT_EQ(bench.disk.files().size(), 1000u);
}

TEST(GroupCommit, DoesNotPutBackWhatWasWrittenAfterTheDecision) {
    PowerCutDisk disk = decided({{"/p/a", "a0"}}, {{"a", "a1"}, {"new", "n1"}});
    const Installed installed(disk);
    ASSERT_TRUE(writeFile("/p/a", "a2").ok());
    ASSERT_TRUE(writeFile("/p/new", "n2").ok());
    ASSERT_TRUE(GroupCommit::recover("/p").ok());
    EXPECT_EQ(withoutBackups(disk), (FileMap{{"/p/a", "a2"}, {"/p/new", "n2"}}));
}

TEST(GroupCommit, IsNotCompletedWithContentsThatAreNotItsOwn) {
    PowerCutDisk disk = decided({{"/p/a", "a0"}}, {{"a", "a1"}});
    const Installed installed(disk);
    for (const auto& [path, content] : disk.files())
        if (content == "a1") { // staged, of the same size
            ASSERT_TRUE(writeFile(path, "zz", Backup::none).ok());
        }
    EXPECT_TRUE(GroupCommit::recover("/p").ok());
    EXPECT_EQ(withoutBackups(disk), (FileMap{{"/p/a", "a0"}}));
}

TEST(GroupCommit, ThatCannotCompleteAnEarlierOneLeavesItDecided) {
    const PowerCutDisk found = decided({{"/p/a", "a0"}}, {{"a", "a1"}});
    int failed = 0;
    for (long at = 0, struck = 1; struck; ++at) {
        Bench bench({});
        bench.disk = found;
        bench.faulty.arm(at, FaultyFiles::Span::once, "Input/output error");
        const bool saved = commit({{"b", "b1"}}).ok();
        struck = bench.faulty.struck();
        bench.faulty.disarm();
        ASSERT_TRUE(GroupCommit::recover("/p").ok());
        const FileMap files = withoutBackups(bench.disk);
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
        const TempFolder another; // what a link leads to is not ours to tidy
        ASSERT_TRUE(writeFile(another / "y.1-0.tmp~", "its writer's", Backup::none).ok());
        std::filesystem::create_directory_symlink(another.path(), folder / "z");
        const Result<GroupCommit::Recovery> recovered = GroupCommit::recover(folder.path());
        ASSERT_TRUE(recovered.ok()) << manifest;
        EXPECT_TRUE(fileExists(another / "y.1-0.tmp~"));
        EXPECT_EQ(recovered->damaged, folder / "commit.manifest.damaged");
        EXPECT_EQ(recovered->removed, 1);
        EXPECT_THAT(systemFiles().list(folder.path()).value(),
                    ElementsAre("commit.manifest.damaged", "z"));
    }
}

// One write or group, cut off after a random operation; what is found is looked at after recovery.
class PowerCut : public testing::Test {
protected:
    // The share of cuts after which the content was neither `before` nor `after`.
    template <class Work> double tornShare(long cuts, const Work& work) {
        RecordProperty("cuts", std::to_string(cuts));
        std::mt19937 random(20240229);
        PowerCutDisk start = Bench(before).disk;
        start.settle();
        Bench counted(before);
        EXPECT_TRUE(work());
        const std::size_t operations = counted.faulty.operations().size();
        long torn = 0;
        for (long i = 0; i < cuts; ++i) {
            Bench running({});
            running.disk = start;
            running.faulty.arm(static_cast<long>(random() % (operations + 1)),
                               FaultyFiles::Span::allForEver);
            acknowledged = work();
            PowerCutDisk found = running.disk.afterCut(random);
            const Installed installed(found);
            if (!GroupCommit::recover("/p").ok() || !whole(withoutBackups(found)))
                ++torn;
        }
        return static_cast<double>(torn) / static_cast<double>(cuts);
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
    const auto work = [&] { return writeFile("/p/a", after["/p/a"]).ok(); };
    EXPECT_EQ(tornShare(rounds(20'000, 500'000), work), 0);
}

TEST_F(PowerCut, NeverTearsAGroup) {
    after = {{"/p/a", std::string(5000, 'A')}, {"/p/e/c", std::string(100, 'C')}};
    const Group group{
        {"a", after["/p/a"].c_str()}, {"e/c", after["/p/e/c"].c_str()}, {"e/b", nullptr}};
    EXPECT_EQ(tornShare(rounds(20'000, 500'000), [&] { return commit(group).ok(); }), 0);
}

TEST_F(PowerCut, NeverTearsALargeGroup) {
    Group group;
    for (int i = 0; i < 12; ++i) {
        group.emplace_back(format("e/%d", i), "content");
        after[format("/p/e/%d", i)] = "content";
    }
    EXPECT_EQ(tornShare(rounds(5'000, 100'000), [&] { return commit(group).ok(); }), 0);
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
