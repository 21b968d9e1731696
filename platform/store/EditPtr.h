// Handles to an opened edit.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"

class Edit;
class EditModifier;

// Keeps an edit open. Any thread; the edit has a lock of its own.
class CUTROOM_API EditPtr {
public:
    // No edit.
    EditPtr() noexcept;
    EditPtr(std::nullptr_t) noexcept;
    EditPtr(Edit* edit) noexcept;
    EditPtr(const Kv::Ptr<Edit>& edit) noexcept;
    // Opens the edit through the edit manager; no edit when it cannot be opened.
    explicit EditPtr(const Cookie& cookie);
    EditPtr(const EditPtr&) noexcept;
    EditPtr(EditPtr&&) noexcept;
    EditPtr& operator=(const EditPtr&) noexcept;
    EditPtr& operator=(EditPtr&&) noexcept;
    // From a modifier that goes: it ends its writing itself.
    EditPtr(EditModifier&&) noexcept;
    EditPtr& operator=(EditModifier&&) noexcept;
    ~EditPtr();

    Edit* get() const noexcept;
    Edit* operator->() const noexcept { return get(); }
    Edit& operator*() const noexcept { return *get(); }
    explicit operator bool() const noexcept { return get() != nullptr; }
    // The edit's cookie; the invalid cookie without edit.
    Cookie getCookie() const;
    void reset() noexcept;

    friend bool operator==(const EditPtr& a, const EditPtr& b) noexcept {
        return a.get() == b.get();
    }

private:
    Kv::Ptr<Edit> edit_;
};

// An edit opened for writing. While at least one modifier of an edit lives, changes recorded
// without their own notification are collected; the end of the outermost tells the union once. What
// every edit-making function returns; an empty one means failure.
class CUTROOM_API EditModifier : public EditPtr {
public:
    EditModifier() noexcept = default;
    // `description` labels the change in logs and history.
    explicit EditModifier(const EditPtr& edit, LightweightString<char> description = {});
    explicit EditModifier(const Cookie& cookie, LightweightString<char> description = {});
    EditModifier(const EditModifier&);
    EditModifier(EditModifier&&) noexcept;
    EditModifier& operator=(EditModifier) noexcept;
    ~EditModifier();

    const LightweightString<char>& getDescription() const noexcept { return description_; }
    // Ends the writing (tells what was collected when outermost) and becomes empty.
    void release();
    void reset() { release(); }

private:
    LightweightString<char> description_;
};
