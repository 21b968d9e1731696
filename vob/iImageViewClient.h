// `iImageViewClient`: a client that shows the pictures of a viewed edit.
#pragma once

#include "platform/base/Object.h"

// Implemented by heirs of `VobClient` beside it. User-interface thread.
class CUTROOM_API iImageViewClient : public virtual iVirtual {
public:
    ~iImageViewClient() override;
    // Tells whether this is the view that others of the same Vob go by.
    virtual bool isMaster() const = 0;
};
