// The loop of the user-interface thread: posted work, events, timers.
#pragma once

#include "platform/base/Guard.h"
#include "platform/messaging/EventQueue.h"
#include "platform/messaging/UiThread.h"

#include <functional>

namespace cutroom {

// Installed with the host, it also becomes the thread and the queue of the messaging layer. Posted
// work and events share one queue and keep the order in which they came.
class CUTROOM_API iEventLoop : public iUiThread, public iEventQueue {
public:
    ~iEventLoop() override;
    using iEventQueue::post;
    using iUiThread::post;

    // Calls `task` on the user-interface thread once `delay` seconds from now and then, with
    // `interval` above 0, every `interval` seconds; calls that were missed are not made up for.
    // Goes on until the guard is dropped, which on that thread is safe inside the task too and may
    // come after the loop's end. Any thread. What `task` throws is logged.
    virtual Kv::Ptr<Guard> addTimer(double delay, double interval, std::function<void()> task) = 0;
    // Hands over what waits in the queue until nothing does; timers stay quiet. User-interface
    // thread. The host calls it as the life ends.
    virtual void drain() noexcept = 0;
};

} // namespace cutroom
