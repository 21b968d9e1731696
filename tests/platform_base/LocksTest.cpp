#include "platform/base/Locks.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
#include <thread>
#include <vector>

// These tests are about entering a lock again, which the static analysis does not know.
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
            // Sooner or later the writer waits. With a lock that lets it go first, this would never
            // return.
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

TEST(SharedLockTest, ThoseWhoEnteredEnterAgainAndReadersSeeWholeWrites) {
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
                    const SharedLock::Write again(lock);
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

TEST(LockOrderDeathTest, AReaderThatWantsToWriteIsStopped) {
    SharedLock lock;
    const SharedLock::Read read(lock);
    EXPECT_DEATH(const SharedLock::Write write(lock), "reader wants to become the writer");
}

TEST(LockOrderDeathTest, IsCheckedWhenALockIsTaken) {
    using R = LockRank;
    struct Row {
        LockRank outer, inner;
        bool allowed;
    };
    for (const Row& row :
         {Row{R::container, R::managerMaps, true}, Row{R::managerMaps, R::container, false},
          Row{R::container, R::change, false}, Row{R::container, R::container, false},
          Row{R::unranked, R::container, true}, Row{R::leaf, R::unranked, true},
          Row{R::notifier, R::container, true}, Row{R::notifier, R::vobClients, true},
          Row{R::container, R::notifier, true}, Row{R::managerMaps, R::notifier, false}}) {
        SCOPED_TRACE(testing::Message() << int(row.inner) << " under " << int(row.outer));
        CriticalSection outer(row.outer);
        SharedLock inner(row.inner);
        const auto takeBoth = [&] {
            const CriticalSection::Lock first(outer);
            const SharedLock::Read second(inner);
            const CriticalSection::Lock again(outer); // its own lock is always open to a thread
        };
        if (row.allowed)
            takeBoth();
        else
            EXPECT_DEATH(takeBoth(),
                         "lock order: a lock of rank [0-9]+ is taken under one of rank");
    }
}

TEST(LockOrderDeathTest, LocksAreLeftInAnyOrder) {
    CriticalSection outer(LockRank::container), inner(LockRank::managerMaps);
    std::array<CriticalSection, 3> between;
    outer.lock();
    for (CriticalSection& each : between)
        each.lock();
    inner.lock();
    outer.unlock();
    for (CriticalSection& each : between)
        each.unlock();
    EXPECT_DEATH(outer.lock(), "lock order") << "the inner one is still held";
    inner.unlock();
    outer.lock();
    outer.unlock();
}

TEST(LockOrderDeathTest, ContainersAreWrittenAndHeldTogetherUnderTheChangeLockOnly) {
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
}

#endif

} // namespace
