#include "bins/ContainerNotice.h"

#include <algorithm>

ContainerNotice::ContainerNotice(const Cookie& container,
                                 const ContainerBase::Modifications& changes,
                                 LightweightString<char> reason)
    : what_(What::changed), subjects_{container}, changes_(changes) {
    if (!reason.empty())
        changes_.setReason(std::move(reason));
}

ContainerNotice::ContainerNotice(What what, CookieVec subjects, LightweightString<char> reason)
    : what_(what), subjects_(std::move(subjects)) {
    changes_.setReason(std::move(reason));
}

ContainerNotice::~ContainerNotice() = default;

bool ContainerNotice::concerns(const Cookie& cookie) const noexcept {
    return std::find(subjects_.begin(), subjects_.end(), cookie) != subjects_.end();
}
