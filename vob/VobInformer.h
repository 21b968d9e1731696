// `Vob::InformerProxy`: one kind of telling.
//
// Internal to this folder.
#pragma once

#include "vob/Vob.h"

// Made on the stack for one telling; calls the operation of a client that goes with its kind.
class Vob::InformerProxy {
public:
    virtual void call(VobClient& client) = 0;

protected:
    InformerProxy() = default;
    ~InformerProxy() = default;
};
