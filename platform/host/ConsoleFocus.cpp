#include "platform/host/ConsoleFocus.h"

#include "platform/host/Host.h"

cutroom::iConsoleFocus::~iConsoleFocus() = default;

ConsoleEventHandler::~ConsoleEventHandler() { cutroom::Host::focus().forget(this); }

bool ConsoleEventHandler::hasConsoleFocus() const noexcept { return getConsoleFocus() == this; }

ConsoleEventHandler* getConsoleFocus() noexcept { return cutroom::Host::focus().get(); }

void setConsoleFocus(ConsoleEventHandler* handler) { cutroom::Host::focus().set(handler); }
