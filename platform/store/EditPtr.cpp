#include "platform/store/EditPtr.h"

#include "platform/store/EditImpl.h"
#include "platform/store/EditManager.h"

#include <utility>

EditPtr::EditPtr() noexcept = default;
EditPtr::EditPtr(std::nullptr_t) noexcept {}
EditPtr::EditPtr(Edit* edit) noexcept : edit_(edit) {}
EditPtr::EditPtr(const Kv::Ptr<Edit>& edit) noexcept : edit_(edit) {}
EditPtr::EditPtr(const Cookie& cookie) : EditPtr(EditManager::instance().open(cookie)) {}
EditPtr::EditPtr(const EditPtr&) noexcept = default;
EditPtr::EditPtr(EditPtr&&) noexcept = default;

EditPtr::EditPtr(EditModifier&& modifier) noexcept
    : edit_(static_cast<const EditPtr&>(modifier).edit_) {}

EditPtr& EditPtr::operator=(EditModifier&& modifier) noexcept {
    return *this = static_cast<const EditPtr&>(modifier);
}

EditPtr& EditPtr::operator=(const EditPtr& other) noexcept { return *this = EditPtr(other); }

EditPtr& EditPtr::operator=(EditPtr&& other) noexcept {
    edit_.swap(other.edit_);
    return *this;
}

EditPtr::~EditPtr() { reset(); }

Edit* EditPtr::get() const noexcept { return edit_.get(); }

Cookie EditPtr::getCookie() const { return edit_ ? edit_->getCookie() : Cookie(); }

void EditPtr::reset() noexcept {
    if (edit_)
        EditManager::forget(std::move(edit_));
}

EditModifier::EditModifier(const EditPtr& edit, LightweightString<char> description)
    : EditPtr(edit), description_(std::move(description)) {
    if (get())
        get()->beginWriting();
}

EditModifier::EditModifier(const Cookie& cookie, LightweightString<char> description)
    : EditModifier(EditManager::instance().open(cookie), std::move(description)) {}

EditModifier::EditModifier(const EditModifier& other)
    : EditPtr(other), description_(other.description_) {
    if (get())
        get()->beginWriting();
}

EditModifier::EditModifier(EditModifier&&) noexcept = default;

EditModifier& EditModifier::operator=(EditModifier other) noexcept {
    release();
    EditPtr::operator=(static_cast<EditPtr&&>(other));
    description_ = std::move(other.description_);
    return *this;
}

EditModifier::~EditModifier() { release(); }

void EditModifier::release() {
    if (get())
        get()->endWriting();
    EditPtr::reset();
}
