#include "platform/base/Object.h"

namespace Kv {

InternalRefCount::~InternalRefCount() = default;

void InternalRefCount::release() const noexcept {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1)
        onLastRelease();
}

void InternalRefCount::onLastRelease() const noexcept { delete this; }

} // namespace Kv

iVirtual::~iVirtual() = default;
iObject::~iObject() = default;
