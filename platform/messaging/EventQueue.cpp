#include "platform/messaging/EventQueue.h"

#include <atomic>

namespace cutroom {

iEventQueue::~iEventQueue() = default;

namespace {
std::atomic<iEventQueue*> installed{nullptr};
} // namespace

iEventQueue* installEventQueue(iEventQueue* queue) noexcept { return installed.exchange(queue); }
iEventQueue* eventQueue() noexcept { return installed.load(); }

} // namespace cutroom

bool event_send(const Event& event) {
    cutroom::iEventQueue* const queue = cutroom::eventQueue();
    if (!queue || !event.handler)
        return false;
    queue->post(event);
    return true;
}

bool event_send_idempotent(const Event& event) {
    cutroom::iEventQueue* const queue = cutroom::eventQueue();
    return queue && event.handler && queue->postUnlessWaiting(event);
}
