// Every operation of a write failing in turn: the files hold the old or the new content, nothing
// temporary stays, the failure is told, and the next try succeeds.
#include "platform/files/Files.h"
#include "platform/files/GroupCommit.h"
#include "tests/support/FaultyFiles.h"
#include "tests/support/PowerCutDisk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

using namespace cutroom;
using cutroom::test::FaultyFiles;
using cutroom::test::PowerCutDisk;

namespace {

using FileMap = std::map<std::string, std::string>;

// A disk with old contents, under a file system whose operations fail.
struct Bench {
    explicit Bench(const FileMap& old) {
        for (const auto& [path, content] : old)
            (void)writeInto(path, content);
        before = installFileSystem(&faulty);
    }
    ~Bench() { installFileSystem(before); }
    Status writeInto(const std::string& path, const std::string& content) {
        const auto file = disk.open(path, OpenMode::createNew);
        (void)disk.write(*file, content.data(), content.size());
        return disk.close(*file);
    }

    PowerCutDisk disk;
    FaultyFiles faulty{disk};
    iFileSystem* before;
};

// The contents without backups.
FileMap withoutBackups(const PowerCutDisk& disk) {
    FileMap files = disk.files();
    std::erase_if(files, [](const auto& file) { return file.first.ends_with(".bak"); });
    return files;
}

constexpr FaultyFiles::Span kOnce = FaultyFiles::Span::once;

// Lets operation 0, 1, 2 … of `work` fail, each on a fresh disk, until none is left to fail.
long sweep(const FileMap& old, FaultyFiles::Span span,
           const std::function<void(Bench&, long at)>& work) {
    for (long at = 0; at < 1000; ++at) {
        Bench bench(old);
        bench.faulty.arm(at, span);
        work(bench, at);
        if (!bench.faulty.struck())
            return at;
    }
    return -1;
}

} // namespace

class FaultSweep : public testing::TestWithParam<FaultyFiles::Span> {};
INSTANTIATE_TEST_SUITE_P(Spans, FaultSweep, testing::Values(kOnce, FaultyFiles::Span::sameForEver));

TEST_P(FaultSweep, ASingleWriteLeavesOldOrNewContentAndSaysSo) {
    const FileMap old{{"/p/a", "old content"}};
    const long operations = sweep(old, GetParam(), [&](Bench& bench, long at) {
        bench.faulty.writeShort(4);
        const Status status = writeFile("/p/a", "new content");
        const FileMap files = withoutBackups(bench.disk);
        ASSERT_EQ(files.count("/p/a"), 1u) << at;
        EXPECT_THAT(files.at("/p/a"), testing::AnyOf("old content", "new content")) << at;
        EXPECT_TRUE(!status.ok() || files.at("/p/a") == "new content") << at;
        EXPECT_TRUE(status.ok() || status.text().find("/p") != std::string::npos) << at;
        bench.faulty.disarm();
        EXPECT_TRUE(writeFile("/p/a", "new content").ok());
        EXPECT_EQ(withoutBackups(bench.disk), (FileMap{{"/p/a", "new content"}})) << at;
        EXPECT_EQ(bench.faulty.openHandles(), 0u);
    });
    EXPECT_GT(operations, 10);
}

TEST(FaultSweepOfOneWrite, LeavesNothingTemporaryAndEveryFailureIsTold) {
    const FileMap old{{"/p/a", "old"}};
    sweep(old, kOnce, [&](Bench& bench, long at) {
        const Status status = writeFile("/p/a", "new");
        if (!bench.faulty.struck())
            return;
        const std::string& failed = bench.faulty.operations()[static_cast<std::size_t>(at)];
        EXPECT_FALSE(status.ok()) << failed;
        EXPECT_EQ(withoutBackups(bench.disk).size(), 1u) << failed;
    });
}

TEST_P(FaultSweep, AGroupIsAllOrNothingOnceRecovered) {
    const FileMap old{{"/p/a", "a0"}, {"/p/e/b", "b0"}, {"/p/gone", "g0"}};
    const FileMap fresh{{"/p/a", "a1"}, {"/p/e/b", "b1"}, {"/p/e/c", "c1"}};
    const auto save = [] {
        GroupCommit group("/p");
        for (const auto& [path, content] : FileMap{{"a", "a1"}, {"e/b", "b1"}, {"e/c", "c1"}})
            if (Status staged = group.write(path, content); !staged)
                return staged;
        if (Status staged = group.remove("gone"); !staged)
            return staged;
        return group.commit();
    };
    const long operations = sweep(old, GetParam(), [&](Bench& bench, long at) {
        const Status status = save();
        bench.faulty.disarm();
        EXPECT_EQ(bench.faulty.openHandles(), 0u) << at;
        const PowerCutDisk left = bench.disk;
        ASSERT_TRUE(GroupCommit::recover("/p").ok()) << at;
        const FileMap files = withoutBackups(bench.disk);
        EXPECT_THAT(files, testing::AnyOf(old, fresh)) << at;
        EXPECT_TRUE(!status.ok() || files == fresh) << at;
        bench.disk = left; // a retry in the same process, without recovery
        EXPECT_TRUE(save().ok()) << at;
        EXPECT_EQ(withoutBackups(bench.disk), fresh) << at;
    });
    EXPECT_GT(operations, 30);
}

TEST(FaultSweepOfProcessEnd, AfterAnyOperationTheNextOpenFindsAllOrNothing) {
    const FileMap old{{"/p/a", "a0"}, {"/p/b", "b0"}};
    const FileMap fresh{{"/p/a", "a1"}, {"/p/b", "b1"}};
    int oldFound = 0, freshFound = 0;
    sweep(old, FaultyFiles::Span::allForEver, [&](Bench& bench, long at) {
        GroupCommit group("/p");
        Status status = group.write("a", "a1");
        status = status.ok() ? group.write("b", "b1") : status;
        status = status.ok() ? group.commit() : status;
        installFileSystem(&bench.disk); // the next process
        ASSERT_TRUE(GroupCommit::recover("/p").ok()) << at;
        const FileMap files = withoutBackups(bench.disk);
        EXPECT_THAT(files, testing::AnyOf(old, fresh)) << at;
        EXPECT_TRUE(!status.ok() || files == fresh) << at;
        (files == old ? oldFound : freshFound)++;
        installFileSystem(&bench.faulty);
    });
    EXPECT_GT(oldFound, 5);
    EXPECT_GT(freshFound, 5);
}

TEST(FaultSweepOfRecovery, ARecoveryThatFailsIsDoneByTheNext) {
    // A decided group of which nothing is in place yet.
    PowerCutDisk decided;
    for (long at = 0; at < 100 && !decided.files().contains("/p/commit.manifest"); ++at) {
        Bench bench({{"/p/a", "a0"}, {"/p/b", "b0"}});
        bench.faulty.arm(at, FaultyFiles::Span::allForEver);
        GroupCommit group("/p");
        (void)group.write("a", "a1");
        (void)group.remove("b");
        (void)group.commit();
        decided = bench.disk;
        installFileSystem(&decided);
    }
    ASSERT_TRUE(decided.files().contains("/p/commit.manifest"));
    for (long at = 0, struck = 1; struck; ++at) {
        Bench bench({});
        bench.disk = decided;
        bench.faulty.arm(at, kOnce);
        const bool recovered = GroupCommit::recover("/p").ok();
        struck = bench.faulty.struck();
        bench.faulty.disarm();
        EXPECT_TRUE(GroupCommit::recover("/p").ok()) << at;
        EXPECT_EQ(withoutBackups(bench.disk), (FileMap{{"/p/a", "a1"}})) << at << recovered;
        EXPECT_EQ(bench.disk.files().at("/p/a.bak"), "a0") << at;
    }
}
