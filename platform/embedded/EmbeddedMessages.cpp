#include "platform/embedded/EmbeddedMessages.h"

namespace cutroom {

void EmbeddedMessages::show(const LightweightString<wchar_t>& text, int display) {
    if (shown_.size() == kKept)
        shown_.erase(shown_.begin());
    shown_.push_back({text, display});
    if (const auto printer = printer_) // a copy: the printer may replace itself
        printer(Shown{text, display});
}

} // namespace cutroom
