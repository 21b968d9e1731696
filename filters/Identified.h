// `Identified`: something that has a cookie.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Object.h"

// Held through `Kv::Ptr`. Implementations say on which thread they may be asked.
class CUTROOM_API Identified : public virtual iObject {
public:
    ~Identified() override;

    // The same for the whole life of the object; the invalid cookie of what has none.
    virtual Cookie getID() const = 0;
};
