#include "platform/embedded/EmbeddedHost.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace cutroom;

namespace {

constexpr int kThreads = 4;
constexpr int kEach = 500;

// Counts, and checks that it is called on one thread only.
class Counter final : public EventHandler {
public:
    eResult handleEvent(const Event& event) override {
        EXPECT_TRUE(isUiThread());
        // Of one thread, what is posted first comes first.
        const auto thread = static_cast<std::size_t>(event.keyCode);
        EXPECT_GT(event.value, last[thread]);
        last[thread] = event.value;
        ++handled;
        return kConsumed;
    }
    int handled = 0;
    std::vector<unsigned> last = std::vector<unsigned>(kThreads, 0);
};

void sendAll(Counter& counter, int thread) {
    EXPECT_FALSE(isUiThread());
    for (unsigned i = 1; i <= kEach; ++i) {
        Event event;
        event.handler = &counter;
        event.keyCode = thread;
        event.value = i;
        EXPECT_TRUE(event_send_idempotent(event));
    }
}

} // namespace

TEST(LoopThreadsTest, EventsFromManyThreadsReachTheHandlerOnTheLoopsThread) {
    EmbeddedHost host(EmbeddedHost::repeatable());
    Counter counter;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&counter, i] { sendAll(counter, i); });
    EXPECT_TRUE(host.loop().runUntil([&] { return counter.handled == kThreads * kEach; }));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(host.loop().waiting(), 0u);
}

TEST(LoopThreadsTest, EqualEventsFromManyThreadsWaitOnce) {
    EmbeddedHost host(EmbeddedHost::repeatable());
    struct Any final : EventHandler {
        eResult handleEvent(const Event&) override {
            ++handled;
            return kConsumed;
        }
        int handled = 0;
    } any;
    std::atomic<int> accepted{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&] {
            Event event;
            event.handler = &any;
            event.text = "the same";
            accepted += event_send_idempotent(event);
        });
    for (std::thread& thread : threads)
        thread.join();
    host.loop().pump();
    EXPECT_EQ(accepted, 1);
    EXPECT_EQ(any.handled, 1);
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
