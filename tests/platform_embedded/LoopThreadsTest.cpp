#include "platform/embedded/EmbeddedHost.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace cutroom;

namespace {

constexpr int kThreads = 4;
constexpr int kEach = 500;

// Counts, and checks that all calls come on one thread, and that those posted by one thread keep
// their order.
class Counter final : public EventHandler {
public:
    eResult handleEvent(const Event& event) override {
        EXPECT_TRUE(isUiThread());
        const auto thread = static_cast<std::size_t>(event.keyCode);
        EXPECT_EQ(event.value, ++last[thread]);
        ++handled;
        return kConsumed;
    }
    int handled = 0;
    std::vector<unsigned> last = std::vector<unsigned>(kThreads, 0);
};

// Sends values 1 to `count` of `key` on a thread of its own; how many of them were taken.
std::thread sender(Counter& counter, int key, unsigned count, std::atomic<int>& taken) {
    return std::thread([&counter, &taken, key, count] {
        EXPECT_FALSE(isUiThread());
        for (unsigned i = 1; i <= count; ++i) {
            Event event;
            event.handler = &counter;
            event.keyCode = key;
            event.value = i;
            taken += event_send_idempotent(event);
        }
    });
}

} // namespace

TEST(LoopThreadsTest, EventsFromManyThreadsReachTheHandlerOnTheLoopsThread) {
    EmbeddedHost host(EmbeddedHost::repeatable());
    Counter counter;
    std::atomic<int> taken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.push_back(sender(counter, i, kEach, taken));
    EXPECT_TRUE(host.loop().runUntil([&] { return counter.handled == kThreads * kEach; }));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(taken, kThreads * kEach);
    EXPECT_EQ(host.loop().waiting(), 0u);
}

TEST(LoopThreadsTest, EqualEventsFromManyThreadsWaitOnce) {
    EmbeddedHost host(EmbeddedHost::repeatable());
    Counter counter;
    std::atomic<int> taken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.push_back(sender(counter, 0, 1, taken));
    for (std::thread& thread : threads)
        thread.join();
    host.loop().pump();
    EXPECT_EQ(taken, 1);
    EXPECT_EQ(counter.handled, 1);
}

TEST(LoopThreadsTest, AWaitingLoopWakesForPostsTimersAndQuit) {
    EmbeddedHost host; // real time
    bool posted = false;
    Kv::Ptr<Guard> timer;
    std::thread poster([&] {
        host.loop().post([&] { posted = true; });
        timer = host.loop().addTimer(0.0, 0.0, [&] { host.loop().quit(); });
    });
    host.loop().run();
    poster.join();
    EXPECT_TRUE(posted);
}

TEST(LoopThreadsTest, TheThreadThatRunsTheLoopIsTheUserInterfaceThread) {
    EmbeddedHost host(EmbeddedHost::repeatable());
    EXPECT_TRUE(isUiThread());
    std::thread other([&] {
        EXPECT_FALSE(isUiThread());
        host.loop().pump();
        EXPECT_TRUE(isUiThread());
    });
    other.join();
    EXPECT_FALSE(isUiThread());
    host.loop().pump();
    EXPECT_TRUE(isUiThread());
}
