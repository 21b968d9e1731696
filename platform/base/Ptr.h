// `Kv::Ptr<T>`: the one owning pointer to objects that carry their own count.
#pragma once

#include "platform/base/Object.h"

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace Kv {

// Shares ownership of a `T` derived from `InternalRefCount`. Copying takes a share, moving costs
// no count. As safe as a raw pointer across threads: one `Ptr` object belongs to one thread at a
// time, the object it points to may be shared by many.
template <class T> class Ptr {
public:
    using element_type = T;

    constexpr Ptr() noexcept = default;
    constexpr Ptr(std::nullptr_t) noexcept {}
    // Takes a share of `object`; null gives an empty pointer.
    Ptr(T* object) noexcept : object_(object) { acquire(); }
    Ptr(const Ptr& other) noexcept : object_(other.object_) { acquire(); }
    Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    Ptr(const Ptr<U>& other) noexcept : object_(other.get()) {
        acquire();
    }
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    Ptr(Ptr<U>&& other) noexcept : object_(other.detach()) {}
    ~Ptr() { drop(); }

    Ptr& operator=(Ptr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    T* get() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    T* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    // Drops the share and becomes empty.
    void reset() noexcept { Ptr().swap(*this); }
    void swap(Ptr& other) noexcept { std::swap(object_, other.object_); }
    // Gives the share away without dropping it; the caller now owes a `release`.
    [[nodiscard]] T* detach() noexcept { return std::exchange(object_, nullptr); }

private:
    void acquire() const noexcept {
        if (object_)
            object_->addRef();
    }
    void drop() noexcept {
        if (object_)
            object_->release();
    }

    T* object_ = nullptr;
};

template <class T, class U> bool operator==(const Ptr<T>& a, const Ptr<U>& b) noexcept {
    return a.get() == b.get();
}
template <class T, class U> bool operator==(const Ptr<T>& a, U* b) noexcept { return a.get() == b; }
template <class T> bool operator==(const Ptr<T>& a, std::nullptr_t) noexcept { return !a; }
template <class T> bool operator<(const Ptr<T>& a, const Ptr<T>& b) noexcept {
    return std::less<T*>()(a.get(), b.get());
}

// Makes a counted object.
template <class T, class... Args> Ptr<T> makePtr(Args&&... args) {
    return Ptr<T>(new T(std::forward<Args>(args)...));
}

// The same object seen as a `T`, or empty when it is none.
template <class T, class U> Ptr<T> dynamicCast(const Ptr<U>& pointer) noexcept {
    return Ptr<T>(dynamic_cast<T*>(pointer.get()));
}

} // namespace Kv

template <class T> struct std::hash<Kv::Ptr<T>> {
    std::size_t operator()(const Kv::Ptr<T>& pointer) const noexcept {
        return std::hash<T*>()(pointer.get());
    }
};
