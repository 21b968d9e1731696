// User messages of a program without a screen: kept, and passed on to a printer.
#pragma once

#include "platform/host/UserMessages.h"

#include <functional>

namespace cutroom {

// User-interface thread only.
class CUTROOM_API EmbeddedMessages final : public iUserMessages {
public:
    struct Shown {
        LightweightString<wchar_t> text;
        int display = 0;
        friend bool operator==(const Shown&, const Shown&) = default;
    };
    // The messages kept; older ones are forgotten.
    static constexpr std::size_t kKept = 1000;

    void show(const LightweightString<wchar_t>& text, int display) override;
    // What was shown and not yet cleared, oldest first.
    const LightweightVector<Shown>& shown() const noexcept { return shown_; }
    void clear() noexcept { shown_.clear(); }
    // Calls `printer` with each message from now on; null ends it.
    void setPrinter(std::function<void(const Shown&)> printer) { printer_ = std::move(printer); }

private:
    LightweightVector<Shown> shown_;
    std::function<void(const Shown&)> printer_;
};

} // namespace cutroom
