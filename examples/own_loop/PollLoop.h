// A loop around poll(2): descriptors of the program, and the library's posted work, events and
// timers.
#pragma once

#include "platform/embedded/LoopQueue.h"
#include "platform/embedded/LoopTimers.h"
#include "platform/host/EventLoop.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

// The queue and the timers are the library's parts, which have no lock; waiting, waking and calling
// are the program's. Made, run and destroyed on one thread, the user-interface thread.
class PollLoop : public cutroom::iEventLoop {
public:
    PollLoop();
    ~PollLoop() override;

    // `hear` is called with what is read from the descriptor.
    void watch(int descriptor, std::function<void(const std::string&)> hear);
    void run();
    void quit() { running_ = false; }

    bool isUiThread() const noexcept override { return std::this_thread::get_id() == thread_; }
    void post(std::function<void()> work) override;
    void post(const Event& event) override;
    bool postUnlessWaiting(const Event& event) override;
    void removeEventsFor(const EventHandler* handler) noexcept override;
    Kv::Ptr<Guard> addTimer(double delay, double interval, std::function<void()> task) override;
    void drain() noexcept override;

private:
    // What other threads and the guards of timers reach, also after the loop's end.
    struct State {
        std::mutex lock;
        cutroom::LoopQueue queue;
        cutroom::LoopTimers timers;
    };
    class Timer;

    void fireTimers();
    int timeout() const;
    void wake() const;

    const std::thread::id thread_ = std::this_thread::get_id();
    const std::shared_ptr<State> state_ = std::make_shared<State>();
    std::map<int, std::function<void(const std::string&)>> watched_;
    int wakeUp_; // an event descriptor that ends the waiting
    bool running_ = false;
};
