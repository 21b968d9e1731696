// Every operation of a write failing in turn: the files hold the old or the new content, nothing
// temporary stays, the failure is told, and the next try succeeds.
#include "platform/files/Files.h"
#include "tests/platform_files/Disks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

using namespace cutroom;
using namespace cutroom::test;
using testing::AnyOf;

namespace {

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
    const FileMap old{{"/p/a", "old content"}}, fresh{{"/p/a", "new content"}};
    const long operations = sweep(old, GetParam(), [&](Bench& bench, long at) {
        bench.faulty.writeShort(4);
        const Status status = writeFile("/p/a", "new content");
        FileMap files = withoutBackups(bench.disk);
        if (GetParam() == kOnce) // nothing temporary stays, and every failure is told
            EXPECT_EQ(status.ok(), !bench.faulty.struck()) << at;
        else // what is temporary may be there, as it cannot be removed
            std::erase_if(files, [](const auto& file) { return file.first != "/p/a"; });
        EXPECT_THAT(files, AnyOf(old, fresh)) << at;
        EXPECT_TRUE(!status.ok() || files == fresh) << at;
        EXPECT_TRUE(status.ok() || status.text().find("/p") != std::string::npos) << at;
        bench.faulty.disarm();
        EXPECT_TRUE(writeFile("/p/a", "new content").ok());
        EXPECT_EQ(withoutBackups(bench.disk), fresh) << at;
        EXPECT_EQ(bench.faulty.openHandles(), 0u);
    });
    EXPECT_GT(operations, 10);
}

TEST_P(FaultSweep, AGroupIsAllOrNothingOnceRecovered) {
    const FileMap old{{"/p/a", "a0"}, {"/p/e/b", "b0"}, {"/p/gone", "g0"}};
    const FileMap fresh{{"/p/a", "a1"}, {"/p/e/b", "b1"}, {"/p/e/c", "c1"}};
    const Group group{{"a", "a1"}, {"e/b", "b1"}, {"e/c", "c1"}, {"gone", nullptr}};
    const long operations = sweep(old, GetParam(), [&](Bench& bench, long at) {
        const Status status = commit(group);
        bench.faulty.disarm();
        EXPECT_EQ(bench.faulty.openHandles(), 0u) << at;
        const PowerCutDisk left = bench.disk;
        ASSERT_TRUE(GroupCommit::recover("/p").ok()) << at;
        const FileMap files = withoutBackups(bench.disk);
        EXPECT_THAT(files, AnyOf(old, fresh)) << at;
        EXPECT_TRUE(!status.ok() || files == fresh) << at;
        bench.disk = left; // a retry in the same process, without recovery
        EXPECT_TRUE(commit(group).ok()) << at;
        EXPECT_EQ(withoutBackups(bench.disk), fresh) << at;
    });
    EXPECT_GT(operations, 30);
}

TEST(FaultSweepOfProcessEnd, AfterAnyOperationTheNextOpenFindsAllOrNothing) {
    const FileMap old{{"/p/a", "a0"}, {"/p/b", "b0"}};
    const FileMap fresh{{"/p/a", "a1"}, {"/p/b", "b1"}};
    int oldFound = 0, freshFound = 0;
    sweep(old, FaultyFiles::Span::allForEver, [&](Bench& bench, long at) {
        const Status status = commit({{"a", "a1"}, {"b", "b1"}});
        const Installed nextProcess(bench.disk);
        ASSERT_TRUE(GroupCommit::recover("/p").ok()) << at;
        const FileMap files = withoutBackups(bench.disk);
        EXPECT_THAT(files, AnyOf(old, fresh)) << at;
        EXPECT_TRUE(!status.ok() || files == fresh) << at;
        (files == old ? oldFound : freshFound)++;
    });
    EXPECT_GT(oldFound, 5);
    EXPECT_GT(freshFound, 5);
}

TEST(FaultSweepOfRecovery, ARecoveryThatFailsIsDoneByTheNext) {
    const PowerCutDisk found =
        decided({{"/p/a", "a0"}, {"/p/b", "b0"}}, {{"a", "a1"}, {"b", nullptr}});
    for (long at = 0, struck = 1; struck; ++at) {
        Bench bench({});
        bench.disk = found;
        bench.faulty.arm(at, kOnce);
        const bool recovered = GroupCommit::recover("/p").ok();
        struck = bench.faulty.struck();
        bench.faulty.disarm();
        EXPECT_TRUE(GroupCommit::recover("/p").ok()) << at;
        EXPECT_EQ(withoutBackups(bench.disk), (FileMap{{"/p/a", "a1"}})) << at << recovered;
        EXPECT_EQ(bench.disk.files().at("/p/a.bak"), "a0") << at;
    }
}
