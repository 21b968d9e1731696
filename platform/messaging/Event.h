// `Event` and `EventHandler`: what is posted to an object and dealt with on the user-interface
// thread.
#pragma once

#include "platform/base/Object.h"
#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"

class EventHandler;

// A type, a key code, a text, a number and an object, addressed to a handler. A value.
struct Event {
    // The type of events in which the library tells changes across threads.
    static constexpr int kChangeType = 16385;

    EventHandler* handler = nullptr; // whom it is for; not kept alive
    int type = 0;
    int keyCode = 0;
    LightweightString<char> text = {};
    unsigned value = 0;
    Kv::Ptr<iObject> data = {};

    // Tells whether handler, type, key code, text and value agree; the object does not count.
    bool sameAs(const Event& other) const noexcept {
        return handler == other.handler && type == other.type && keyCode == other.keyCode &&
               value == other.value && text == other.text;
    }
};

// An object to which events are posted. Lives and dies on the user-interface thread.
class CUTROOM_API EventHandler {
public:
    // What became of an event.
    enum eResult { kNotConsumed = 0, kConsumed = 1 };

    EventHandler() = default;
    // Events belong to the object that they were posted to, never to a copy.
    EventHandler(const EventHandler&) noexcept {}
    EventHandler& operator=(const EventHandler&) noexcept { return *this; }
    // Removes the events that still wait for this handler.
    virtual ~EventHandler();

    // Deals with one event. User-interface thread.
    virtual eResult handleEvent(const Event& event);
};
