#include "platform/messaging/Event.h"

#include "platform/messaging/EventQueue.h"

EventHandler::~EventHandler() {
    if (cutroom::iEventQueue* const queue = cutroom::eventQueue())
        queue->removeEventsFor(this);
}

EventHandler::eResult EventHandler::handleEvent(const Event&) { return kNotConsumed; }
