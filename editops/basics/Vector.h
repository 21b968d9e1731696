// `Vector<T>`: a vector whose element operations are virtual, so that an heir may keep an order or
// follow every change.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

// Indices and count are 16 bits wide. A value; one thread at a time.
template <class T> class Vector {
public:
    Vector() = default;
    Vector(const Vector&) = default;
    Vector(Vector&&) noexcept = default;
    Vector& operator=(const Vector&) = default;
    Vector& operator=(Vector&&) noexcept = default;
    virtual ~Vector() = default;

    std::uint16_t size() const noexcept { return static_cast<std::uint16_t>(items_.size()); }
    bool empty() const noexcept { return items_.empty(); }
    // `index` must be below the count.
    const T& operator[](std::uint16_t index) const { return items_[index]; }
    T& operator[](std::uint16_t index) { return items_[index]; }

    // Adds at the end; false, and nothing added, when the vector is full (65535 elements).
    virtual bool append(const T& item) { return insert(size(), item); }
    // Inserts before `index`; at the end when it lies beyond. False when the vector is full.
    virtual bool insert(std::uint16_t index, const T& item) {
        if (items_.size() >= 0xFFFF)
            return false;
        items_.insert(items_.begin() + (index < items_.size() ? index : size()), item);
        return true;
    }
    // Erases one element; nothing past the end.
    virtual void erase(std::uint16_t index) {
        if (index < items_.size())
            items_.erase(items_.begin() + index);
    }
    // Replaces one element; nothing past the end.
    virtual void assign(std::uint16_t index, const T& item) {
        if (index < items_.size())
            items_[index] = item;
    }
    virtual void clear() { items_.clear(); }

protected:
    std::vector<T>& items() noexcept { return items_; }
    const std::vector<T>& items() const noexcept { return items_; }

private:
    std::vector<T> items_;
};
