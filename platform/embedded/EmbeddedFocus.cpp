#include "platform/embedded/EmbeddedFocus.h"

#include <utility>

namespace cutroom {

// The one that loses the focus may move it on, or destroy the new holder: then the new holder is
// no longer the one to tell.
void EmbeddedFocus::set(ConsoleEventHandler* handler) {
    ConsoleEventHandler* const before = std::exchange(holder_, handler);
    if (before == handler)
        return;
    if (before)
        before->handleConsoleFocus();
    if (handler && holder_ == handler)
        handler->handleConsoleFocus();
}

void EmbeddedFocus::forget(const ConsoleEventHandler* handler) noexcept {
    if (holder_ == handler)
        holder_ = nullptr;
}

} // namespace cutroom
