// Redrawing of a program without a screen: whether it is held back.
#pragma once

#include "platform/host/Redraw.h"

namespace cutroom {

// User-interface thread only.
class CUTROOM_API EmbeddedRedraw final : public iRedraw {
public:
    void defer() override { ++depth_; }
    void resume() noexcept override { --depth_; }
    bool deferred() const noexcept { return depth_ > 0; }

private:
    int depth_ = 0;
};

} // namespace cutroom
