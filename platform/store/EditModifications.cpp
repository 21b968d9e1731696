#include "platform/store/EditModifications.h"

#include <utility>

template class ValServer<EditModifications>;

void EditModifications::add(EditModificationType kind) {
    if (kind != kModNone)
        kinds_ |= bit(kind);
}

void EditModifications::add(const EditModification& change) {
    if (change.kind == kModNone)
        return;
    kinds_ |= bit(change.kind);
    if (change != EditModification(change.kind))
        details_.push_back(change);
}

void EditModifications::add(const EditModifications& other) {
    kinds_ |= other.kinds_;
    keepDescription_ = keepDescription_ || other.keepDescription_;
    details_.insert(details_.end(), other.details_.begin(), other.details_.end());
}

void EditModifications::clear() {
    kinds_ = 0;
    keepDescription_ = false;
    details_.clear();
}

bool EditModifications::structureChanged() const noexcept {
    return includesAnyOf(bit(kModChannelsAdded) | bit(kModChannelsRemoved) | bit(kModRestored) |
                         bit(kModFlattened));
}

bool EditModifications::contentReplaced() const noexcept {
    return includesAnyOf(bit(kModRestored) | bit(kModFlattened));
}

LightweightString<char> EditModifications::asString() const {
    std::string text;
    for (int kind = 1; kind < 64; ++kind) {
        if (!includes(static_cast<EditModificationType>(kind)))
            continue;
        if (!text.empty())
            text += ' ';
        text += std::to_string(kind);
    }
    return text;
}

EditModificationNotice::~EditModificationNotice() = default;
