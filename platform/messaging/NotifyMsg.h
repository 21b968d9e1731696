// `NotifyMsg`: the general message that a `Notifier` tells.
#pragma once

#include "platform/base/Object.h"
#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"

#include <utility>

// A type, a text, and an object that is either shared (kept alive by the message) or only pointed
// to (valid while the message is told). A value.
class CUTROOM_API NotifyMsg {
public:
    NotifyMsg() = default;
    explicit NotifyMsg(LightweightString<char> text) : text_(std::move(text)) {}
    explicit NotifyMsg(Kv::Ptr<iObject> object, LightweightString<char> text = {})
        : text_(std::move(text)), object_(std::move(object)), pointer_(object_.get()) {}
    // An object that the sender keeps alive during the telling; what it is follows from the type.
    explicit NotifyMsg(void* pointer, LightweightString<char> text = {})
        : text_(std::move(text)), pointer_(pointer) {}

    // The message type under which it is told; 0 before.
    int getType() const noexcept { return type_; }
    void setType(int type) noexcept { type_ = type; }
    const LightweightString<char>& getText() const noexcept { return text_; }
    // The shared object; empty when there is none.
    const Kv::Ptr<iObject>& getObject() const noexcept { return object_; }
    // The object that is only pointed to (for a shared one, its `iObject`); may be null.
    void* getPointer() const noexcept { return pointer_; }
    // The shared object as a `T`; null when it is none.
    template <class T> T* getObjectAs() const noexcept { return dynamic_cast<T*>(object_.get()); }

private:
    int type_ = 0;
    LightweightString<char> text_;
    Kv::Ptr<iObject> object_;
    void* pointer_ = nullptr;
};
