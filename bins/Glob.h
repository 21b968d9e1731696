// `Glob`: anything that the user interface shows, as far as the library needs to know it.
#pragma once

#include "platform/base/Object.h"

// Embedders derive their panels from it, so that what is dropped or pointed at can be asked for the
// interfaces it has. User-interface thread only.
class CUTROOM_API Glob : public virtual iVirtual {
public:
    ~Glob() override;
};
