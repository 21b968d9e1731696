// Calling out where nobody is left to catch.
#pragma once

#include "platform/base/Log.h"

#include <exception>

namespace cutroom {

// Makes the call; what it throws is logged after `who` ("<who>: what was called threw: ...").
template <class Call> void callLogged(const char* who, const Call& call) noexcept {
    try {
        call();
    } catch (const std::exception& thrown) {
        LogBoth("%s: what was called threw: %s\n", who, thrown.what());
    } catch (...) {
        LogBoth("%s: what was called threw\n", who);
    }
}

} // namespace cutroom
