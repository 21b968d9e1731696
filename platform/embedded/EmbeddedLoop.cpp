#include "platform/embedded/EmbeddedLoop.h"

#include "platform/base/Log.h"
#include "platform/embedded/CallLogged.h"

#include <algorithm>
#include <condition_variable>
#include <utility>

namespace cutroom {

struct EmbeddedLoop::State {
    mutable CriticalSection lock{LockRank::leaf};
    std::condition_variable_any changed;
    LoopQueue queue CUTROOM_GUARDED_BY(lock);
    LoopTimers timers CUTROOM_GUARDED_BY(lock);
    bool quit CUTROOM_GUARDED_BY(lock) = false;
};

namespace {

constexpr char kWho[] = "Event loop";

void run(const LoopQueue::Item& item) {
    if (item.work)
        item.work();
    else if (item.event.handler)
        item.event.handler->handleEvent(item.event);
}

} // namespace

EmbeddedLoop::EmbeddedLoop(iLoopClock& clock)
    : clock_(clock), state_(std::make_shared<State>()), uiThread_(std::this_thread::get_id()) {}

EmbeddedLoop::~EmbeddedLoop() {
    LoopQueue::Items dropped;
    {
        CriticalSection::Lock lock(state_->lock);
        dropped = state_->queue.takeAll();
    }
}

bool EmbeddedLoop::isUiThread() const noexcept {
    return uiThread_.load(std::memory_order_acquire) == std::this_thread::get_id();
}

void EmbeddedLoop::becomeUiThread() noexcept {
    if (!isUiThread())
        uiThread_.store(std::this_thread::get_id(), std::memory_order_release);
}

void EmbeddedLoop::post(std::function<void()> work) {
    if (!work)
        return;
    CriticalSection::Lock lock(state_->lock);
    state_->queue.push(std::move(work));
    state_->changed.notify_all();
}

void EmbeddedLoop::post(const Event& event) {
    CriticalSection::Lock lock(state_->lock);
    state_->queue.push(event);
    state_->changed.notify_all();
}

bool EmbeddedLoop::postUnlessWaiting(const Event& event) {
    CriticalSection::Lock lock(state_->lock);
    const bool posted = state_->queue.pushUnlessWaiting(event);
    if (posted)
        state_->changed.notify_all();
    return posted;
}

// The events are destroyed after the lock is left, since they may hold the last share of what they
// carry.
void EmbeddedLoop::removeEventsFor(const EventHandler* handler) noexcept {
    LoopQueue::Items removed;
    CriticalSection::Lock lock(state_->lock);
    removed = state_->queue.takeFor(handler);
}

Kv::Ptr<Guard> EmbeddedLoop::addTimer(double delay, double interval, std::function<void()> task) {
    auto shared = std::make_shared<const std::function<void()>>(std::move(task));
    const double now = clock_.now();
    // The guard is made first: a timer without one would outlive what it calls.
    const auto id = std::make_shared<LoopTimers::Id>(0);
    auto guard = Kv::makePtr<Kv::ActionGuard>([id, watched = std::weak_ptr<State>(state_)] {
        const std::shared_ptr<State> state = watched.lock();
        if (!state || *id == 0)
            return;
        LoopTimers::Task removed;
        CriticalSection::Lock lock(state->lock);
        removed = state->timers.remove(*id);
    });
    CriticalSection::Lock lock(state_->lock);
    *id = state_->timers.add(now, delay, interval, std::move(shared));
    state_->changed.notify_all();
    return guard;
}

std::size_t EmbeddedLoop::fireTimers() noexcept {
    const double now = clock_.now();
    LoopTimers::Id newest = 0;
    {
        CriticalSection::Lock lock(state_->lock);
        newest = state_->timers.newest();
    }
    for (std::size_t count = 0;; ++count) {
        LoopTimers::Task task;
        {
            CriticalSection::Lock lock(state_->lock);
            task = state_->timers.takeDue(now, newest);
        }
        if (!task)
            return count;
        callLogged(kWho, *task);
    }
}

// Hands over what is waiting now. What is posted meanwhile waits for the next turn.
std::size_t EmbeddedLoop::handOver() noexcept {
    const std::size_t most = waiting();
    for (std::size_t count = 0; count < most; ++count) {
        LoopQueue::Items item;
        {
            CriticalSection::Lock lock(state_->lock);
            item = state_->queue.take();
        }
        if (item.empty()) // handed over or removed by what was called
            return count;
        callLogged(kWho, [&] { cutroom::run(item.front()); });
    }
    return most;
}

std::size_t EmbeddedLoop::turn() noexcept { return fireTimers() + handOver(); }

std::size_t EmbeddedLoop::turnsUntilQuiet(bool timers) noexcept {
    std::size_t calls = 0;
    for (int turns = 0; turns < kMostTurns; ++turns) {
        const std::size_t made = timers ? turn() : handOver();
        calls += made;
        if (made == 0 && waiting() == 0)
            return calls;
    }
    LogBoth("%s: the queue refills itself; gave up after %d turns\n", kWho, kMostTurns);
    return calls;
}

void EmbeddedLoop::drain() noexcept { turnsUntilQuiet(false); }

std::size_t EmbeddedLoop::pump() {
    becomeUiThread();
    return turnsUntilQuiet(true);
}

std::size_t EmbeddedLoop::waiting() const {
    CriticalSection::Lock lock(state_->lock);
    return state_->queue.size();
}

void EmbeddedLoop::waitForWork(double until) {
    CriticalSection::Lock lock(state_->lock);
    if (!state_->quit && state_->queue.empty())
        clock_.wait(std::min(until, state_->timers.nextDue()), state_->changed, state_->lock);
}

bool EmbeddedLoop::takeQuit() {
    CriticalSection::Lock lock(state_->lock);
    return std::exchange(state_->quit, false);
}

bool EmbeddedLoop::runUntil(const std::function<bool()>& condition, double timeout) {
    const double end = clock_.now() + timeout;
    while (true) {
        becomeUiThread();
        turn();
        if (condition())
            return true;
        if (takeQuit())
            return false;
        if (!(clock_.now() < end)) { // at once when it is no number
            pump();
            return condition();
        }
        waitForWork(end);
    }
}

void EmbeddedLoop::runFor(double seconds) {
    runUntil([] { return false; }, seconds);
}

void EmbeddedLoop::run() { runFor(kForever); }

void EmbeddedLoop::quit() {
    CriticalSection::Lock lock(state_->lock);
    state_->quit = true;
    state_->changed.notify_all();
}

} // namespace cutroom
