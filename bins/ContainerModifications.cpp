// The records of change of a container.
#include "bins/ContainerBase.h"

#include <algorithm>

bool ContainerBase::Modification::refersTo(const Cookie& asset) const noexcept {
    return std::find(cookies_.begin(), cookies_.end(), asset) != cookies_.end();
}

ContainerBase::Modifications::~Modifications() = default;

bool ContainerBase::Modifications::add(Modification change) {
    if (!change.valid())
        return false;
    const auto same = std::find_if(records_.begin(), records_.end(), [&](const auto& record) {
        return record.getType() == change.getType();
    });
    if (same == records_.end())
        records_.push_back(std::move(change));
    else
        same->add(change.getCookies());
    return true;
}

void ContainerBase::Modifications::clear() noexcept {
    records_.clear();
    reason_.clear();
}

unsigned ContainerBase::Modifications::getTypes() const noexcept {
    unsigned types = 0;
    for (const Modification& record : records_)
        types |= record.getType();
    return types;
}

bool ContainerBase::Modifications::includes(unsigned mask) const noexcept {
    return (getTypes() & mask) != 0;
}

bool ContainerBase::Modifications::includes(unsigned mask, unsigned detailMask) const noexcept {
    return std::any_of(records_.begin(), records_.end(), [=](const Modification& record) {
        return record.includes(mask) && (record.getDetail() & detailMask) != 0;
    });
}

bool ContainerBase::Modifications::includes(LogAttribute::eType attribute) const noexcept {
    return std::any_of(records_.begin(), records_.end(),
                       [=](const Modification& record) { return record.includes(attribute); });
}

bool ContainerBase::Modifications::refersTo(const Cookie& asset) const noexcept {
    return std::any_of(records_.begin(), records_.end(),
                       [&](const Modification& record) { return record.refersTo(asset); });
}
