// `cutroom::BinBatch`: a batch of one container's changes that ends with the scope.
#pragma once

#include "bins/ContainerBase.h"

#include <utility>

namespace cutroom {

// Unlike `ContainerModifier` it takes no share: it is for a container's own operations.
class BinBatch {
public:
    explicit BinBatch(ContainerBase& container, LightweightString<char> reason = {})
        : container_(container), reason_(std::move(reason)) {
        container_.beginModifications();
    }
    ~BinBatch() { container_.endModifications(reason_); }
    BinBatch(const BinBatch&) = delete;
    BinBatch& operator=(const BinBatch&) = delete;

private:
    ContainerBase& container_;
    const LightweightString<char> reason_;
};

} // namespace cutroom
