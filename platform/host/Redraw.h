// Holding back the redrawing of the screen while much changes at once.
#pragma once

#include "platform/base/Export.h"

namespace cutroom {

// User-interface thread only.
class CUTROOM_API iRedraw {
public:
    virtual ~iRedraw();
    // Holds redrawing back until `resume` has been called once for each `defer`.
    virtual void defer() = 0;
    virtual void resume() noexcept = 0;
};

} // namespace cutroom

namespace Glib {

// Holds redrawing back for its own lifetime; deferrals nest. User-interface thread only.
class CUTROOM_API UpdateDeferrer {
public:
    UpdateDeferrer();
    ~UpdateDeferrer();
    UpdateDeferrer(const UpdateDeferrer&) = delete;
    UpdateDeferrer& operator=(const UpdateDeferrer&) = delete;
};

} // namespace Glib
