// The console focus of a program without a console.
#pragma once

#include "platform/host/ConsoleFocus.h"

namespace cutroom {

// User-interface thread only.
class CUTROOM_API EmbeddedFocus final : public iConsoleFocus {
public:
    ConsoleEventHandler* get() const noexcept override { return holder_; }
    void set(ConsoleEventHandler* handler) override;
    void forget(const ConsoleEventHandler* handler) noexcept override;

private:
    ConsoleEventHandler* holder_ = nullptr;
};

} // namespace cutroom
