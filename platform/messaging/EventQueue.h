// The queue of events, as the lower layers see it. The host's loop installs it.
#pragma once

#include "platform/messaging/Event.h"

namespace cutroom {

class CUTROOM_API iEventQueue {
public:
    virtual ~iEventQueue();
    // Appends an event, to be handed to its handler on the user-interface thread later, never
    // inside this call. Any thread.
    virtual void post(const Event& event) = 0;
    // The same, unless an event that is `sameAs` this one waits already. False when dropped.
    virtual bool postUnlessWaiting(const Event& event) = 0;
    // Takes out every event that waits for `handler`; none of them is handed over any more.
    // User-interface thread, also while an event is being handled.
    virtual void removeEventsFor(const EventHandler* handler) noexcept = 0;
};

// Installs `queue` (null: none); gives the one before. The caller keeps it alive until it is
// replaced, and replaces it while no other thread uses it.
CUTROOM_API iEventQueue* installEventQueue(iEventQueue* queue) noexcept;
// The one in force; null when there is none.
CUTROOM_API iEventQueue* eventQueue() noexcept;

} // namespace cutroom

// Posts an event to its handler. False, and nothing posted, without a handler or a queue. Any
// thread.
CUTROOM_API bool event_send(const Event& event);
// The same, but an event equal to one that waits (handler, type, key code, text and value) is
// dropped; false then too.
CUTROOM_API bool event_send_idempotent(const Event& event);
