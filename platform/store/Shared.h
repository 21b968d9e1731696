// `Shared<T>`: a value that copies share until one of them changes it.
#pragma once

#include <atomic>
#include <utility>

namespace cutroom {

// Copying is O(1) and never copies the `T`; `write` gives a `T` of its own first. Different
// `Shared` objects may be used on different threads also while they share; one object belongs to
// one thread at a time. An empty one reads as `T()`.
template <class T> class Shared {
public:
    Shared() noexcept = default;
    explicit Shared(T value) : block_(new Block(std::move(value))) {}
    Shared(const Shared& other) noexcept : block_(other.block_) {
        if (block_)
            block_->shares.fetch_add(1, std::memory_order_relaxed);
    }
    Shared(Shared&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    ~Shared() {
        if (block_ && block_->shares.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete block_;
    }
    Shared& operator=(Shared other) noexcept {
        std::swap(block_, other.block_);
        return *this;
    }

    const T& operator*() const {
        static const T none{};
        return block_ ? block_->value : none;
    }
    const T* operator->() const { return &**this; }

    // The value, to be changed: a copy when others share it.
    T& write() {
        if (!block_)
            block_ = new Block(T{});
        else if (!isOwn())
            *this = Shared(T(block_->value));
        return block_->value;
    }
    // True when no other object shares the value (or there is none).
    bool isOwn() const noexcept {
        return !block_ || block_->shares.load(std::memory_order_acquire) == 1;
    }
    // What is equal for all that share one value, and for all empty ones.
    const void* identity() const noexcept { return block_; }

    friend bool operator==(const Shared& a, const Shared& b) {
        return a.block_ == b.block_ || *a == *b;
    }

private:
    struct Block {
        explicit Block(T initial) : value(std::move(initial)) {}
        std::atomic<int> shares{1};
        T value;
    };
    Block* block_ = nullptr;
};

} // namespace cutroom
