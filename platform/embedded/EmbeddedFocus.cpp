#include "platform/embedded/EmbeddedFocus.h"

#include <utility>

namespace cutroom {

// The handler that loses the focus may move it again or destroy the new holder. Then the new holder
// must not be told.
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
