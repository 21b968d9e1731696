// `UIThreadCallback<Msg>`: brings a callback to the user-interface thread.
#pragma once

#include "platform/base/Export.h"
#include "platform/messaging/Callback.h"
#include "platform/messaging/GuardedCallback.h"
#include "platform/messaging/UiThread.h"

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

// Wraps a callback so that it runs on the user-interface thread only: at once when told there, and
// posted with a copy of the message when told on any other thread. What is still posted when the
// last registration of the wrapper ends, or the last of their guards is dropped, is not delivered;
// a call that is already under way on the user-interface thread is not waited for by a guard
// dropped on another thread.
template <class Msg>
class CUTROOM_API UIThreadCallback final : public iCallbackBase<int, Msg>,
                                           public cutroom::iGuardedCallback {
public:
    // Decides on the user-interface thread, just before each delivery, whether it takes place.
    using DeliveryCondition = std::function<bool(const Msg&)>;

    explicit UIThreadCallback(CallbackPtr<Msg> callback) : callback_(std::move(callback)) {}

    // Sets the condition, before the callback is registered. An empty one delivers everything.
    void setDeliveryCondition(DeliveryCondition condition) { condition_ = std::move(condition); }

    // The callback's answer when it was called at once; 0 when posted or held back by the
    // condition.
    int call(const Msg& message) override {
        if (cutroom::isUiThread())
            return deliver(message);
        cutroom::postToUiThread([self = Kv::Ptr<UIThreadCallback>(this), message] {
            if (!self->isOver())
                self->deliver(message);
        });
        return 0;
    }

    void registrationBegun() noexcept override {
        registrations_.fetch_add(1, std::memory_order_acq_rel);
        wasRegistered_.store(true, std::memory_order_release);
    }
    void registrationEnded() noexcept override {
        registrations_.fetch_sub(1, std::memory_order_acq_rel);
    }
    const GuardCount& guardCount() const noexcept override { return guards_; }

private:
    // Registered once, and no more.
    bool isOver() const noexcept {
        return wasRegistered_.load(std::memory_order_acquire) &&
               (registrations_.load(std::memory_order_acquire) == 0 ||
                guards_->load(std::memory_order_acquire) == 0);
    }
    int deliver(const Msg& message) {
        if (!callback_ || (condition_ && !condition_(message)))
            return 0;
        return callback_->call(message);
    }

    const CallbackPtr<Msg> callback_;
    DeliveryCondition condition_;
    std::atomic<int> registrations_{0};
    const GuardCount guards_ = std::make_shared<std::atomic<int>>(0);
    std::atomic<bool> wasRegistered_{false};
};

// A callback from a function object or a member function, brought to the user-interface thread.
template <class Msg, class Function>
Kv::Ptr<UIThreadCallback<Msg>> makeUIThreadCallback(Function function) {
    return Kv::makePtr<UIThreadCallback<Msg>>(makeCallback<Msg>(std::move(function)));
}
template <class Object, class Class, class Result, class Msg>
Kv::Ptr<UIThreadCallback<Msg>> makeUIThreadCallback(Object* object,
                                                    Result (Class::*member)(const Msg&)) {
    return Kv::makePtr<UIThreadCallback<Msg>>(makeCallback(object, member));
}
