// The roots of the class tree: reference counting, and the empty interfaces that give every
// shared object one virtual destructor and one count however many interfaces it has.
#pragma once

#include "platform/base/Export.h"

#include <atomic>

namespace Kv {

// An object that carries its own count. Counts change atomically, so any thread may hold or drop a
// share; which thread may use the object is for the derived class to say.
class CUTROOM_API InternalRefCount {
public:
    InternalRefCount() noexcept = default;
    // A copied object is a new one: nobody shares it yet, so its count starts at 0.
    InternalRefCount(const InternalRefCount&) noexcept {}
    InternalRefCount& operator=(const InternalRefCount&) noexcept { return *this; }
    virtual ~InternalRefCount();

    // Takes one share.
    void addRef() const noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
    // Drops one share; the last one calls `onLastRelease`.
    void release() const noexcept;
    // The number of shares at this moment; for diagnostics and tests.
    int refCount() const noexcept { return count_.load(std::memory_order_relaxed); }

protected:
    // Runs when the last share is dropped, on the thread that dropped it. Deletes the object;
    // an heir that may die on one thread only overrides it to post its destruction there.
    virtual void onLastRelease() const noexcept;

private:
    mutable std::atomic<int> count_{0};
};

} // namespace Kv

// Root of the interfaces that may be asked for one another with `dynamic_cast`.
class CUTROOM_API iVirtual {
public:
    iVirtual() = default;
    iVirtual(const iVirtual&) = default;
    iVirtual& operator=(const iVirtual&) = default;
    virtual ~iVirtual();
};

// A counted object that can travel in a notification.
class CUTROOM_API iObject : public virtual Kv::InternalRefCount, public virtual iVirtual {
public:
    ~iObject() override;
};
