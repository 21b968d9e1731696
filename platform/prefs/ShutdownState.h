// Tells whether the program is ending, so that work that is no longer useful can be left out.
#pragma once

#include "platform/base/Export.h"

// Any thread.
class CUTROOM_API ShutdownState {
public:
    // True from `setExiting` to the end of this life of the process.
    static bool isExiting() noexcept;
    // Called by the program when it begins to end, before the project is closed.
    static void setExiting();
};
