// Several threads register, leave and tell at once; meant for the thread sanitizer.
#include "platform/messaging/Notifier.h"
#include "tests/support/Scale.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace {

void runThreads(int count, const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

template <class Function> Kv::Ptr<Guard> listen(const Notifier& notifier, Function function) {
    return notifier.registerNotification(makeCallback<NotifyMsg>(std::move(function)), 1);
}

TEST(NotifierThreads, NobodyIsCalledAfterItsGuardWasDropped) {
    Notifier notifier;
    std::atomic<long> late{0};
    const int rounds = static_cast<int>(cutroom::test::rounds(3000, 300'000));
    runThreads(4, [&](int thread) {
        for (int i = 0; i < rounds; ++i) {
            if (thread % 2 == 0) {
                notifier.call(NotifyMsg(), 1);
                continue;
            }
            // Plain memory: a call after the drop is a race and a wrong answer.
            int alive = 1;
            Kv::Ptr<Guard> guard = listen(notifier, [&](auto&) { late += alive != 1; });
            guard.reset();
            alive = 0;
        }
    });
    EXPECT_EQ(late, 0);
    EXPECT_FALSE(notifier.hasListeners());
}

// Each of two threads, inside a telling of its own notifier, drops a guard of the other's: neither
// may wait for the other.
TEST(NotifierThreads, TwoTellingsThatEndEachOthersListenersDoNotStop) {
    const int rounds = static_cast<int>(cutroom::test::rounds(300, 30'000));
    for (int round = 0; round < rounds; ++round) {
        Notifier notifiers[2];
        Kv::Ptr<Guard> victims[2];
        std::barrier<> bothInside(2);
        std::atomic<int> afterDrop{0};
        std::atomic<bool> dropped[2] = {false, false};
        std::vector<Kv::Ptr<Guard>> kept;
        for (int i = 0; i < 2; ++i) {
            kept.push_back(listen(notifiers[i], [&, i](auto&) {
                bothInside.arrive_and_wait();
                victims[1 - i].reset();
                dropped[1 - i] = true;
                bothInside.arrive_and_wait();
            }));
            victims[i] = listen(notifiers[i], [&, i](auto&) { afterDrop += dropped[i]; });
        }
        runThreads(2, [&](int i) { notifiers[i].call(NotifyMsg(), 1); });
        EXPECT_EQ(afterDrop, 0);
        EXPECT_EQ(notifiers[0].numListeners() + notifiers[1].numListeners(), 2u);
    }
}

// A registration that another thread ended leaves its callback whole for as long as it runs.
TEST(NotifierThreads, ACallbackEndedElsewhereLivesUntilItsTellingEnds) {
    Notifier notifier;
    Notifier elsewhere;
    const auto token = std::make_shared<int>(0);
    Kv::Ptr<Guard> ended;
    Kv::Ptr<Guard> added;
    const Kv::Ptr<Guard> dropping = listen(elsewhere, [&](auto&) { ended.reset(); });
    ended = listen(notifier, [&, token](auto&) {
        std::thread([&] { elsewhere.call(NotifyMsg(), 1); }).join();
        added = listen(notifier, [](auto&) {});
        EXPECT_EQ(token.use_count(), 2);
        EXPECT_EQ(notifier.numListeners(), 1u);
    });
    notifier.call(NotifyMsg(), 1);
    EXPECT_EQ(token.use_count(), 1);
}

TEST(NotifierThreads, GuardsMayGoWhileTheirNotifierGoes) {
    const int rounds = static_cast<int>(cutroom::test::rounds(300, 30'000));
    const auto token = std::make_shared<int>(0);
    for (int round = 0; round < rounds; ++round) {
        auto notifier = std::make_unique<Notifier>();
        std::vector<Kv::Ptr<Guard>> guards[3];
        for (int i = 0; i < 30; ++i)
            guards[i % 3].push_back(listen(*notifier, [token](auto&) {}));
        runThreads(4, [&](int i) {
            if (i < 3)
                guards[i].clear();
            else
                notifier.reset();
        });
    }
    EXPECT_EQ(token.use_count(), 1);
}

TEST(NotifierThreads, ATellingIsWaitedForOutsideOfTellings) {
    Notifier notifier;
    std::promise<void> inside;
    std::promise<void> leave;
    std::atomic<bool> done{false};
    Kv::Ptr<Guard> guard = listen(notifier, [&](auto&) {
        inside.set_value();
        leave.get_future().wait();
        done = true;
    });
    std::thread teller([&] { notifier.call(NotifyMsg(), 1); });
    inside.get_future().wait();
    std::thread dropper([&] {
        guard.reset();
        EXPECT_TRUE(done);
    });
    leave.set_value();
    dropper.join();
    teller.join();
    EXPECT_FALSE(notifier.hasListeners());
}

} // namespace
