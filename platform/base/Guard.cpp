#include "platform/base/Guard.h"

#include "platform/base/Log.h"

#include <exception>

namespace Kv {

Guard::~Guard() = default;

ActionGuard::~ActionGuard() {
    if (!atEnd_)
        return;
    try {
        atEnd_();
    } catch (const std::exception& thrown) {
        LogBoth("Guard: its action failed: %s\n", thrown.what());
    }
}

} // namespace Kv
