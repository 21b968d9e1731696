#include "PollLoop.h"

#include "platform/embedded/CallLogged.h"
#include "platform/host/Clock.h"
#include "platform/host/Host.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

using Held = std::lock_guard<std::mutex>;

PollLoop::PollLoop() : wakeUp_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

PollLoop::~PollLoop() { ::close(wakeUp_); }

// --- what the library posts -------------------------------------------------------------------

void PollLoop::wake() const {
    const std::uint64_t one = 1;
    (void)!::write(wakeUp_, &one, sizeof one); // it can only fail when it is awake already
}

void PollLoop::post(std::function<void()> work) {
    const Held held(state_->lock);
    state_->queue.push(std::move(work));
    wake();
}

void PollLoop::post(const Event& event) {
    const Held held(state_->lock);
    state_->queue.push(event);
    wake();
}

bool PollLoop::postUnlessWaiting(const Event& event) {
    const Held held(state_->lock);
    const bool posted = state_->queue.pushUnlessWaiting(event);
    wake();
    return posted;
}

void PollLoop::removeEventsFor(const EventHandler* handler) noexcept {
    cutroom::LoopQueue::Items removed; // destroyed after the lock is let go
    const Held held(state_->lock);
    removed = state_->queue.takeFor(handler);
}

void PollLoop::drain() noexcept {
    const auto next = [this] {
        const Held held(state_->lock);
        return state_->queue.take();
    };
    for (auto item = next(); !item.empty(); item = next())
        cutroom::callLogged("loop", [&] {
            if (item.front().work)
                item.front().work();
            else
                item.front().event.handler->handleEvent(item.front().event);
        });
}

// --- timers -----------------------------------------------------------------------------------

class PollLoop::Timer : public Guard {
public:
    Timer(std::shared_ptr<State> state, cutroom::LoopTimers::Id id)
        : state_(std::move(state)), id_(id) {}
    ~Timer() override {
        cutroom::LoopTimers::Task removed;
        const Held held(state_->lock);
        removed = state_->timers.remove(id_);
    }

private:
    const std::shared_ptr<State> state_;
    const cutroom::LoopTimers::Id id_;
};

Kv::Ptr<Guard> PollLoop::addTimer(double delay, double interval, std::function<void()> task) {
    auto shared = std::make_shared<const std::function<void()>>(std::move(task));
    const double now = cutroom::Host::clock().now();
    const Held held(state_->lock);
    wake(); // it may be due earlier than what is waited for
    return Kv::makePtr<Timer>(state_, state_->timers.add(now, delay, interval, std::move(shared)));
}

void PollLoop::fireTimers() {
    const double now = cutroom::Host::clock().now();
    const auto next = [this, now] {
        const Held held(state_->lock);
        return state_->timers.takeDue(now, state_->timers.newest());
    };
    while (const auto task = next())
        cutroom::callLogged("timer", *task);
}

// --- waiting ----------------------------------------------------------------------------------

void PollLoop::watch(int descriptor, std::function<void(const std::string&)> hear) {
    watched_[descriptor] = std::move(hear);
}

int PollLoop::timeout() const {
    const Held held(state_->lock);
    const double wait = state_->timers.nextDue() - cutroom::Host::clock().now();
    return std::isinf(wait) ? -1 : static_cast<int>(std::ceil(std::clamp(wait, 0.0, 60.0) * 1000));
}

void PollLoop::run() {
    running_ = true;
    while (running_) {
        std::vector<pollfd> waiting{{wakeUp_, POLLIN, 0}};
        for (const auto& [descriptor, hear] : watched_)
            waiting.push_back({descriptor, POLLIN, 0});
        ::poll(waiting.data(), waiting.size(), timeout());
        char bytes[256];
        for (const pollfd& each : waiting) {
            if ((each.revents & POLLIN) == 0)
                continue;
            const ssize_t count = ::read(each.fd, bytes, sizeof bytes);
            if (count > 0 && each.fd != wakeUp_)
                watched_[each.fd](std::string(bytes, static_cast<std::size_t>(count)));
        }
        fireTimers();
        drain();
    }
}
