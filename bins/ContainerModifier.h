// `ContainerModifier<T>`: a container opened for changes: one batch that ends with the scope.
#pragma once

#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"

#include <utility>

// Keeps the container alive. Changes made while it lives are told once, with its reason, when the
// outermost batch of the container ends. An empty one means failure where it is returned. A copy
// opens a batch of its own.
template <class T> class ContainerModifier {
public:
    ContainerModifier() = default;
    explicit ContainerModifier(Kv::Ptr<T> container, LightweightString<char> reason = {})
        : container_(std::move(container)), reason_(std::move(reason)) {
        begin();
    }
    ContainerModifier(const ContainerModifier& other)
        : container_(other.container_), reason_(other.reason_) {
        begin();
    }
    ContainerModifier(ContainerModifier&& other) noexcept
        : container_(std::move(other.container_)), reason_(std::move(other.reason_)) {}
    ContainerModifier& operator=(ContainerModifier other) noexcept {
        container_.swap(other.container_);
        reason_.swap(other.reason_);
        return *this;
    }
    ~ContainerModifier() { release(); }

    T* get() const noexcept { return container_.get(); }
    T* operator->() const noexcept { return get(); }
    T& operator*() const noexcept { return *container_; }
    explicit operator bool() const noexcept { return static_cast<bool>(container_); }
    const Kv::Ptr<T>& getContainer() const noexcept { return container_; }
    // Ends the batch and becomes empty.
    void release() {
        if (const Kv::Ptr<T> container = std::exchange(container_, nullptr))
            container->endModifications(reason_);
    }

private:
    void begin() {
        if (container_)
            container_->beginModifications();
    }

    Kv::Ptr<T> container_;
    LightweightString<char> reason_;
};
