// An edit that is being made: it is taken back unless it is finished.
#pragma once

#include "platform/store/EditManager.h"

#include <utility>

namespace cutroom {

// Owned by the operation that makes the edit, on its thread.
class UnfinishedEdit {
public:
    explicit UnfinishedEdit(EditModifier edit) : edit_(std::move(edit)) {}
    // What could not be removed from the disk is removed before the next save.
    ~UnfinishedEdit() {
        if (edit_)
            (void)EditManager::instance().discard({edit_.getCookie()});
    }
    UnfinishedEdit(const UnfinishedEdit&) = delete;
    UnfinishedEdit& operator=(const UnfinishedEdit&) = delete;

    explicit operator bool() const noexcept { return static_cast<bool>(edit_); }
    Edit* operator->() const noexcept { return edit_.get(); }
    EditModifier& get() noexcept { return edit_; }
    // The edit stays.
    EditModifier finish() { return std::exchange(edit_, EditModifier()); }

private:
    EditModifier edit_;
};

} // namespace cutroom
