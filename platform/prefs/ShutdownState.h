// Tells whether the program is on its way out, for what is not worth doing any more.
#pragma once

#include "platform/base/Export.h"

// Any thread.
class CUTROOM_API ShutdownState {
public:
    // True from `setExiting` to the end of this life of the process.
    static bool isExiting() noexcept;
    // Called by whoever ends the program, before the project is closed.
    static void setExiting();
};
