// Callbacks: what a listener hands to a notifier.
#pragma once

#include "platform/base/Guard.h"
#include "platform/base/Ptr.h"

#include <functional>
#include <type_traits>
#include <utility>

namespace cutroom {

// What every callback is, whatever it is called with.
class CUTROOM_API CallbackRoot : public virtual Kv::InternalRefCount {
public:
    ~CallbackRoot() override;

    // Runs once for each registration of this callback, before its first call, and once when that
    // registration ends (its guard was dropped, or its notifier is gone). The notifier's lock is
    // held: neither may call out. Both do nothing in the base.
    virtual void registrationBegun() noexcept;
    virtual void registrationEnded() noexcept;
};

} // namespace cutroom

// A callback called with a `Msg` on the telling thread, while the notifier's lock is held. It may
// drop any guard (its own too), register, tell again, and destroy the notifier. What it throws is
// logged and goes no further.
template <class Result, class Msg> class CUTROOM_API iCallbackBase : public cutroom::CallbackRoot {
public:
    // The answer is not used by the notifiers.
    virtual Result call(const Msg& message) = 0;
};

template <class Msg> using CallbackPtr = Kv::Ptr<iCallbackBase<int, Msg>>;

namespace cutroom {

// A callback that runs a function object.
template <class Msg, class Function> class FunctionCallback final : public iCallbackBase<int, Msg> {
public:
    explicit FunctionCallback(Function function) : function_(std::move(function)) {}

    int call(const Msg& message) override {
        if constexpr (std::is_convertible_v<std::invoke_result_t<Function&, const Msg&>, int>)
            return std::invoke(function_, message);
        else
            return std::invoke(function_, message), 0;
    }

private:
    Function function_;
};

} // namespace cutroom

// A callback from a function object that takes `const Msg&`: makeCallback<NotifyMsg>([&](auto&
// message) { ... }).
template <class Msg, class Function> CallbackPtr<Msg> makeCallback(Function function) {
    return CallbackPtr<Msg>(new cutroom::FunctionCallback<Msg, Function>(std::move(function)));
}
// A callback that calls a member function. `object` is not kept alive: it drops the guard of the
// registration before it goes.
template <class Object, class Class, class Result, class Msg>
CallbackPtr<Msg> makeCallback(Object* object, Result (Class::*member)(const Msg&)) {
    return makeCallback<Msg>(
        [object, member](const Msg& message) { return (object->*member)(message); });
}
