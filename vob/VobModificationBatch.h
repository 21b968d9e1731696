// `VobModificationBatch`: a batch of changes of one Vob that ends with its scope.
#pragma once

#include "platform/base/Ptr.h"
#include "vob/Vob.h"

// Changes made while it lives are told once, when the outermost batch of the Vob ends. Keeps the
// Vob alive. Any thread; ends on the thread it began on.
class VobModificationBatch {
public:
    explicit VobModificationBatch(Kv::Ptr<Vob> vob) : vob_(std::move(vob)) {
        if (vob_)
            vob_->beginModifications();
    }
    ~VobModificationBatch() {
        if (vob_)
            vob_->endModifications();
    }
    VobModificationBatch(const VobModificationBatch&) = delete;
    VobModificationBatch& operator=(const VobModificationBatch&) = delete;

private:
    Kv::Ptr<Vob> vob_;
};
