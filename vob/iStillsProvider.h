// `iStillsProvider`: pictures that stand for places of a viewed edit instead of its own.
#pragma once

#include "platform/base/Object.h"
#include "platform/base/Strings.h"

// Given to a Vob, which keeps it alive. User-interface thread.
class CUTROOM_API iStillsProvider : public iObject {
public:
    ~iStillsProvider() override;
    // Where the picture for the edit time `seconds` lies; empty when this provider has none.
    virtual LightweightString<wchar_t> getStill(double seconds) const = 0;
};
