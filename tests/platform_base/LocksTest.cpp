#include "platform/base/Locks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

// Entering again is what these tests are about, and what the static analysis does not know.
#if defined(__clang__)
#pragma clang diagnostic ignored "-Wthread-safety-analysis"
#endif

namespace {

TEST(CriticalSectionTest, TheHolderEntersAgainAndOthersWait) {
    CriticalSection section;
    const CriticalSection::Lock outer(section);
    const CriticalSection::Lock inner(section);
    EXPECT_TRUE(section.tryLock());
    section.unlock();
    EXPECT_FALSE(std::async(std::launch::async, [&] { return section.tryLock(); }).get());
}

TEST(SharedLockTest, TheWriterEntersAgainAsWriterAndReader) {
    SharedLock lock;
    int value = 0;
    {
        const SharedLock::Write write(lock);
        const SharedLock::Write again(lock);
        const SharedLock::Read read(lock);
        value = 1;
    }
    // All entries are given back: another thread becomes the writer.
    std::thread([&] {
        const SharedLock::Write write(lock);
        value = 2;
    }).join();
    EXPECT_EQ(value, 2);
}

TEST(SharedLockTest, AReaderEntersAgainWhileAWriterWaits) {
    SharedLock lock;
    std::atomic<bool> written{false};
    std::atomic<bool> seen{false};
    std::promise<void> reading;
    std::thread writer;
    std::thread newReader;
    {
        const SharedLock::Read read(lock);
        writer = std::thread([&] {
            reading.set_value();
            const SharedLock::Write write(lock);
            written = true;
        });
        reading.get_future().wait();
        for (int i = 0; i < 1000; ++i) {
            // Sooner or later the writer waits; a lock that lets it go first would stop here.
            const SharedLock::Read again(lock);
            std::this_thread::yield();
        }
        EXPECT_FALSE(written);
        newReader = std::thread([&] {
            const SharedLock::Read late(lock);
            seen = true;
        });
    }
    writer.join();
    newReader.join();
    EXPECT_TRUE(written && seen);
}

TEST(SharedLockTest, ReadersSeeWholeWrites) {
    SharedLock lock;
    int first = 0;
    int second = 0;
    std::atomic<int> torn{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 2000; ++i) {
                if (i % 4 == t) {
                    const SharedLock::Write write(lock);
                    ++first;
                    const SharedLock::Read read(lock);
                    ++second;
                } else {
                    const SharedLock::Read read(lock);
                    const SharedLock::Read again(lock);
                    torn += first != second;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(first, 2000);
}

#ifndef NDEBUG

using LockOrderDeathTest = testing::Test;

TEST(LockOrderDeathTest, AReaderThatWantsToWriteIsStopped) {
    SharedLock lock;
    const SharedLock::Read read(lock);
    EXPECT_DEATH(const SharedLock::Write write(lock), "reader wants to become the writer");
}

struct OrderRow {
    const char* name;
    LockRank outer;
    LockRank inner;
    bool allowed;
};

class LockOrder : public testing::TestWithParam<OrderRow> {};

TEST_P(LockOrder, IsCheckedWhenALockIsTaken) {
    CriticalSection outer(GetParam().outer);
    SharedLock inner(GetParam().inner);
    const auto takeBoth = [&] {
        const CriticalSection::Lock first(outer);
        const SharedLock::Read second(inner);
        const CriticalSection::Lock again(outer); // its own lock is always open to a thread
    };
    if (GetParam().allowed) {
        takeBoth();
        EXPECT_TRUE(outer.tryLock());
        outer.unlock();
    } else {
        EXPECT_DEATH(takeBoth(), "lock order: a lock of rank [0-9]+ is taken under one of rank");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Locks, LockOrder,
    testing::Values(
        OrderRow{"inwards", LockRank::container, LockRank::managerMaps, true},
        OrderRow{"outwards", LockRank::managerMaps, LockRank::container, false},
        OrderRow{"aChangeUnderAContainer", LockRank::container, LockRank::change, false},
        OrderRow{"twoOfOneRank", LockRank::container, LockRank::container, false},
        OrderRow{"underAnUnranked", LockRank::unranked, LockRank::container, true},
        OrderRow{"unrankedUnderALeaf", LockRank::leaf, LockRank::unranked, true},
        OrderRow{"insideATelling", LockRank::notifier, LockRank::container, true},
        OrderRow{"tellingInsideATelling", LockRank::notifier, LockRank::vobClients, true},
        OrderRow{"tellingUnderAContainer", LockRank::container, LockRank::notifier, true},
        OrderRow{"tellingUnderAMap", LockRank::managerMaps, LockRank::notifier, false}),
    [](const auto& row) { return row.param.name; });

TEST(ContainerLocks, AreWrittenAndHeldTogetherUnderTheChangeLockOnly) {
    CriticalSection change(LockRank::change);
    SharedLock one(LockRank::container);
    SharedLock other(LockRank::container);
    const auto write = [&] { const SharedLock::Write lock(one); };
    const auto readBoth = [&] {
        const SharedLock::Read first(one);
        const SharedLock::Read second(other);
    };
    EXPECT_DEATH(write(), "without the change lock");
    EXPECT_DEATH(readBoth(), "lock order");
    const CriticalSection::Lock held(change);
    write();
    readBoth();
    EXPECT_TRUE(change.tryLock());
    change.unlock();
}

#endif

} // namespace
