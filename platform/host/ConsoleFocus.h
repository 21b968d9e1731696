// The console focus: which viewer the keys and wheels of the console act on.
#pragma once

#include "platform/base/Export.h"

// Something that can hold the console focus. User-interface thread only.
class CUTROOM_API ConsoleEventHandler {
public:
    ConsoleEventHandler() = default;
    // A copy is another handler and does not hold the focus.
    ConsoleEventHandler(const ConsoleEventHandler&) noexcept {}
    ConsoleEventHandler& operator=(const ConsoleEventHandler&) noexcept { return *this; }
    // Gives the focus up without telling.
    virtual ~ConsoleEventHandler();

    // The focus came to this handler or left it; `hasConsoleFocus` tells which.
    virtual void handleConsoleFocus() = 0;
    bool hasConsoleFocus() const noexcept;
};

namespace cutroom {

// User-interface thread only.
class CUTROOM_API iConsoleFocus {
public:
    virtual ~iConsoleFocus();
    // The holder, or null.
    virtual ConsoleEventHandler* get() const noexcept = 0;
    // Moves the focus (null: to nobody). Of two that change, the one that lost it is told first;
    // setting the holder again tells nobody.
    virtual void set(ConsoleEventHandler* handler) = 0;
    // `handler` goes: the focus falls to nobody if it held it, and nobody is told.
    virtual void forget(const ConsoleEventHandler* handler) noexcept = 0;
};

} // namespace cutroom

// The installed service in one call; without a host nobody ever holds the focus.
CUTROOM_API ConsoleEventHandler* getConsoleFocus() noexcept;
CUTROOM_API void setConsoleFocus(ConsoleEventHandler* handler);
