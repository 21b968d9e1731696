// Messages that the user must see, as opposed to the log.
#pragma once

#include "platform/base/Strings.h"

namespace cutroom {

// The display argument of a message that stays until the user dismisses it.
inline constexpr int kShowUntilDismissed = 999999;

class CUTROOM_API iUserMessages {
public:
    virtual ~iUserMessages();
    // Shows `text` (lines joined by newlines) for `display` milliseconds, or until dismissed. Does
    // not wait for the user. User-interface thread only.
    virtual void show(const LightweightString<wchar_t>& text, int display) = 0;
};

// Shows a message through the installed service; without a host it goes to the log.
CUTROOM_API void showUserMessage(const LightweightString<wchar_t>& text,
                                 int display = kShowUntilDismissed);

} // namespace cutroom
