// A registration handle: the registration lasts as long as a share of it is kept, and ends when the
// last one is dropped.
#pragma once

#include "platform/base/Ptr.h"

#include <functional>
#include <utility>

namespace Kv {

// Base of all registration handles. Dropping one is safe at any moment, on any thread, and from
// inside the very callback that it keeps registered.
class CUTROOM_API Guard : public virtual InternalRefCount {
public:
    ~Guard() override;
};

// A guard that runs a given action when it goes.
class CUTROOM_API ActionGuard final : public Guard {
public:
    explicit ActionGuard(std::function<void()> atEnd) : atEnd_(std::move(atEnd)) {}
    ~ActionGuard() override;

private:
    std::function<void()> atEnd_;
};

} // namespace Kv

using Kv::Guard;
