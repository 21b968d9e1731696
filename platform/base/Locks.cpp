#include "platform/base/Locks.h"

#include <array>
#include <cassert>
#include <cstdio>
#include <cstdlib>

namespace {

#ifdef NDEBUG
constexpr bool kCheckRanks = false;
#else
constexpr bool kCheckRanks = true;
#endif

#if defined(__SANITIZE_THREAD__)
constexpr bool kThreadSanitizer = true;
#elif defined(__has_feature)
constexpr bool kThreadSanitizer = __has_feature(thread_sanitizer);
#else
constexpr bool kThreadSanitizer = false;
#endif

// One lock that this thread holds, however often it entered.
struct Held {
    const void* lock = nullptr;
    LockRank rank = LockRank::unranked;
    int entries = 0;
    bool asWriter = false; // a SharedLock, entered as its writer first
};

// The locks that one thread holds. Needs no destructor, so that what dies with the thread may
// still lock.
struct HeldLocks {
    std::array<Held, 128> locks;
    std::size_t count = 0;

    Held* find(const void* lock) noexcept {
        for (std::size_t i = count; i > 0; --i) {
            if (locks[i - 1].lock == lock)
                return &locks[i - 1];
        }
        return nullptr;
    }
    bool holds(LockRank rank) const noexcept {
        for (std::size_t i = 0; i < count; ++i) {
            if (locks[i].rank == rank)
                return true;
        }
        return false;
    }
    void enter(const void* lock, LockRank rank, bool asWriter = false) noexcept {
        if (Held* held = find(lock)) {
            ++held->entries;
            return;
        }
        if (count == locks.size()) {
            std::fputs("a thread holds too many locks\n", stderr);
            std::abort();
        }
        locks[count++] = {lock, rank, 1, asWriter};
    }
    // Tells whether that was the last entry.
    bool leave(const void* lock) noexcept {
        Held* const held = find(lock);
        assert(held && "a lock is released that this thread does not hold");
        if (!held || --held->entries > 0)
            return false;
        for (Held* at = held; at + 1 != locks.data() + count; ++at)
            *at = at[1];
        --count;
        return true;
    }
};

thread_local constinit HeldLocks heldLocks;

bool isChecked(LockRank rank) noexcept {
    return rank != LockRank::unranked && rank != LockRank::making;
}

bool isHeldWhileTelling(LockRank rank) noexcept {
    return rank == LockRank::vobClients || rank == LockRank::notifier;
}

// The holder of the change lock is the only one to hold several containers, so it may take the lock
// of one under that of another.
bool isContainerInChange(LockRank outer, LockRank inner) noexcept {
    return outer == LockRank::container && inner == outer && heldLocks.holds(LockRank::change);
}

// Stops the program when this thread may not wait for the lock.
void checkRank(const void* lock, LockRank rank) noexcept {
    if (!isChecked(rank) || heldLocks.find(lock))
        return;
    for (std::size_t i = 0; i < heldLocks.count; ++i) {
        const LockRank outer = heldLocks.locks[i].rank;
        if (!isChecked(outer) || isHeldWhileTelling(outer) || outer < rank ||
            isContainerInChange(outer, rank))
            continue;
        std::fprintf(stderr, "lock order: a lock of rank %d is taken under one of rank %d\n",
                     static_cast<int>(rank), static_cast<int>(outer));
        std::abort();
    }
}

} // namespace

CUTROOM_NO_THREAD_SAFETY void CriticalSection::lock() {
    if (kCheckRanks && isChecked(rank_))
        checkRank(this, rank_);
    // One thread only ever takes the locks of clients, those of several Vobs in any order; single
    // objects are made wherever one is first asked for. The sanitizer, which does not know, draws
    // no order from a lock that was not waited for.
    const bool anyOrder = rank_ == LockRank::vobClients || rank_ == LockRank::making;
    if (!kThreadSanitizer || !anyOrder || !mutex_.try_lock())
        mutex_.lock();
    if (kCheckRanks && isChecked(rank_))
        heldLocks.enter(this, rank_);
}

CUTROOM_NO_THREAD_SAFETY bool CriticalSection::tryLock() {
    if (!mutex_.try_lock())
        return false;
    if (kCheckRanks && isChecked(rank_))
        heldLocks.enter(this, rank_);
    return true;
}

CUTROOM_NO_THREAD_SAFETY void CriticalSection::unlock() {
    if (kCheckRanks && isChecked(rank_))
        heldLocks.leave(this);
    mutex_.unlock();
}

// What a thread enters again is its own business: only its first entry and last leave touch the
// lock. A reader then costs one addition and one subtraction, unless a writer is in or waits.

CUTROOM_NO_THREAD_SAFETY void SharedLock::lockRead() {
    if (kCheckRanks)
        checkRank(this, rank_);
    if (Held* const held = heldLocks.find(this)) {
        ++held->entries;
        return;
    }
    if (state_.fetch_add(1, std::memory_order_acquire) & kWriter) {
        std::unique_lock lock(mutex_);
        if (state_.fetch_sub(1, std::memory_order_relaxed) == (kWriter | 1))
            changed_.notify_all(); // a writer may have waited for this reader that was none
        changed_.wait(lock,
                      [this] { return (state_.load(std::memory_order_relaxed) & kWriter) == 0; });
        // A writer needs the mutex to say that it waits.
        state_.fetch_add(1, std::memory_order_acquire);
    }
    heldLocks.enter(this, rank_);
}

// A thread may leave in another order than it entered: what counts is how it entered first.
void SharedLock::leave() {
    const Held* const held = heldLocks.find(this);
    const bool asWriter = held && held->asWriter;
    if (!heldLocks.leave(this))
        return;
    if (!asWriter) {
        if (state_.fetch_sub(1, std::memory_order_release) == (kWriter | 1)) {
            const std::lock_guard lock(mutex_);
            changed_.notify_all();
        }
        return;
    }
    const std::lock_guard lock(mutex_);
    writerIsIn_ = false;
    if (writersWaiting_ == 0)
        state_.fetch_and(~kWriter, std::memory_order_release);
    changed_.notify_all();
}

CUTROOM_NO_THREAD_SAFETY void SharedLock::unlockRead() { leave(); }

CUTROOM_NO_THREAD_SAFETY void SharedLock::lockWrite() {
    if (kCheckRanks) {
        checkRank(this, rank_);
        assert((rank_ != LockRank::container || heldLocks.holds(LockRank::change)) &&
               "a container is changed without the change lock");
    }
    if (Held* const held = heldLocks.find(this)) {
        assert(held->asWriter && "a reader wants to become the writer");
        ++held->entries;
        return;
    }
    {
        std::unique_lock lock(mutex_);
        ++writersWaiting_;
        state_.fetch_or(kWriter, std::memory_order_relaxed);
        changed_.wait(lock, [this] {
            return !writerIsIn_ && state_.load(std::memory_order_acquire) == kWriter;
        });
        --writersWaiting_;
        writerIsIn_ = true;
    }
    heldLocks.enter(this, rank_, true);
}

CUTROOM_NO_THREAD_SAFETY void SharedLock::unlockWrite() { leave(); }
