// `CallbackInvokerBase`: one listener in a notifier's list.
#pragma once

#include "platform/messaging/Callback.h"

#include <utility>

// The message type wanted, the callback, and the number of the registration. A value that lies in
// its notifier's list (contiguous, in the order of registration) and is guarded by that list's
// lock.
class CallbackInvokerBase {
public:
    // The type of a listener that is no more; matches no message.
    static constexpr int kEndedType = -1;

    CallbackInvokerBase(int msgType, Kv::Ptr<cutroom::CallbackRoot> callback) noexcept
        : callback_(std::move(callback)), msgType_(msgType) {}

    // Tells whether a message of this type is meant for the listener.
    bool typeMatch(int msgType) const noexcept { return msgType_ == msgType; }
    bool ended() const noexcept { return msgType_ == kEndedType; }
    cutroom::CallbackRoot* callback() const noexcept { return callback_.get(); }

    // From now on no message matches. The callback stays, since it may be running.
    void end() noexcept { msgType_ = kEndedType; }
    // Gives the callback away.
    Kv::Ptr<cutroom::CallbackRoot> takeCallback() noexcept { return std::move(callback_); }

private:
    Kv::Ptr<cutroom::CallbackRoot> callback_;
    int msgType_;
};
