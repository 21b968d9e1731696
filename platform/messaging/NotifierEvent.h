// `NotifierEvent<T>`: the record handed to the listeners of a published value.
#pragma once

#include "platform/base/Export.h"

#include <utility>

class NotifierBase;

// The message type, the value, and who tells it. A value.
template <class T> class CUTROOM_API NotifierEvent {
public:
    NotifierEvent() = default;
    NotifierEvent(int msgType, T value, const NotifierBase* sender)
        : msgType_(msgType), value_(std::move(value)), sender_(sender) {}

    // The type under which the event is told.
    int getMsgType() const noexcept { return msgType_; }
    void setMsgType(int msgType) noexcept { msgType_ = msgType; }
    // The value at the time of telling: later changes do not alter it.
    const T& getValue() const noexcept { return value_; }
    // The notifier that tells; valid while the event is told.
    const NotifierBase* getSender() const noexcept { return sender_; }

private:
    int msgType_ = 0;
    T value_{};
    const NotifierBase* sender_ = nullptr;
};
