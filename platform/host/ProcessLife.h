// The life of a process: everything that exists once lives from `Host::install` to
// `Host::uninstall`. Objects made within it are destroyed in the reverse order of their making, so
// one program, or one test binary, may live many lives, each starting afresh.
//
// What is made while no host is installed belongs to an unhosted life, which the next
// `Host::install` ends.
#pragma once

#include "platform/base/Locks.h"
#include "platform/base/Object.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace cutroom {

// The order in which a life is taken down.
class CUTROOM_API ProcessLife {
public:
    // Runs `task` once when the life ends, before all tasks added earlier. A task that is added
    // while the life ends runs in the same end. Any thread; the task runs on the thread that ends
    // the life, without a lock held, and must not throw.
    static void atEnd(std::function<void()> task);
    // Tells whether the life is being taken down at this moment. Any thread.
    static bool ending() noexcept;
    // Takes the life down: runs all tasks, the latest first. Called by `Host`; no other thread may
    // use the library meanwhile.
    static void end() noexcept;
    // Held while a single object or value is made. Recursive, so making one may ask for others;
    // makers take no lock under which other threads ask for a single object.
    static CriticalSection& making() noexcept;
};

// The one `T` of a life. `T` is made by its default constructor, which, like the destructor, may
// be private when this class is its friend; a counted `T` is shared, not deleted. An exported
// class calls it from its own `instance()` in a .cpp file.
template <class T> class CUTROOM_API ProcessSingleton {
public:
    // The object, made at the first call in each life. Any thread. Singles that T's constructor
    // asks for count as older and outlive it. Asked for after its destruction in a life that is
    // ending, it is made afresh and destroyed again.
    static T& get() {
        T* object = slot_.load(std::memory_order_acquire);
        return object ? *object : make();
    }
    // The object, or null while there is none. Any thread; for destructors, which should not make
    // an object only to deregister from it.
    static T* find() noexcept { return slot_.load(std::memory_order_acquire); }

private:
    static T& make();
    static void destroy() noexcept;
    static void drop(T* object) noexcept;

    static inline std::atomic<T*> slot_{nullptr};
};

// A value that is read once in each life, at its first use: a configuration value, a preference, a
// measured time. Lives as a static object or longer than a life; a holder that goes earlier takes
// its value along.
template <class T> class OncePerProcess {
public:
    // `read` gives the value; called under `ProcessLife::making()`, on the thread that asks first.
    explicit OncePerProcess(std::function<T()> read)
        : state_(std::make_shared<State>(std::move(read))) {}

    // The value of this life. Any thread. The reference holds until the life ends.
    const T& get() const {
        return state_->ready.load(std::memory_order_acquire) ? *state_->value : first();
    }
    operator const T&() const { return get(); }

private:
    struct State {
        explicit State(std::function<T()> reader) : read(std::move(reader)) {}
        const std::function<T()> read;
        std::atomic<bool> ready{false}; // set after `value`
        std::optional<T> value;
    };
    const T& first() const;

    std::shared_ptr<State> state_;
};

// ---------------------------------------------------------------------------------------------

template <class T> void ProcessSingleton<T>::drop(T* object) noexcept {
    if constexpr (std::is_base_of_v<Kv::InternalRefCount, T>)
        object->release();
    else
        delete object;
}

// The slot keeps the object while its destructor runs: what the destructor calls may ask for it.
template <class T> void ProcessSingleton<T>::destroy() noexcept {
    if (T* object = slot_.load(std::memory_order_acquire)) {
        drop(object);
        slot_.store(nullptr, std::memory_order_release);
    }
}

template <class T> T& ProcessSingleton<T>::make() {
    CriticalSection::Lock lock(ProcessLife::making());
    if (T* made = slot_.load(std::memory_order_acquire))
        return *made;
    T* object = new T();
    if constexpr (std::is_base_of_v<Kv::InternalRefCount, T>)
        object->addRef();
    try {
        ProcessLife::atEnd([] { destroy(); });
    } catch (...) {
        drop(object);
        throw;
    }
    slot_.store(object, std::memory_order_release);
    return *object;
}

template <class T> const T& OncePerProcess<T>::first() const {
    CriticalSection::Lock lock(ProcessLife::making());
    State& state = *state_;
    if (!state.ready.load(std::memory_order_acquire)) {
        state.value.emplace(state.read());
        ProcessLife::atEnd([kept = std::weak_ptr<State>(state_)] {
            if (const std::shared_ptr<State> held = kept.lock()) {
                held->ready.store(false, std::memory_order_release);
                held->value.reset();
            }
        });
        state.ready.store(true, std::memory_order_release);
    }
    return *state.value;
}

} // namespace cutroom
