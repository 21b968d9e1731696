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
    void enter(const void* lock, LockRank rank) noexcept {
        if (Held* held = find(lock)) {
            ++held->entries;
            return;
        }
        if (count == locks.size()) {
            std::fputs("a thread holds too many locks\n", stderr);
            std::abort();
        }
        locks[count++] = {lock, rank, 1};
    }
    void leave(const void* lock) noexcept {
        Held* const held = find(lock);
        assert(held && "a lock is released that this thread does not hold");
        if (held && --held->entries == 0) {
            for (Held* at = held; at + 1 != locks.data() + count; ++at)
                *at = at[1];
            --count;
        }
    }
};

thread_local constinit HeldLocks heldLocks;

bool isHeldWhileTelling(LockRank rank) noexcept {
    return rank == LockRank::vobClients || rank == LockRank::notifier;
}

// Who holds the change lock is the only one to hold several containers, so it may take the lock of
// one under that of another.
bool isContainerInChange(LockRank outer, LockRank inner) noexcept {
    return outer == LockRank::container && inner == outer && heldLocks.holds(LockRank::change);
}

// Stops the program when this thread may not wait for the lock.
void checkRank(const void* lock, LockRank rank) noexcept {
    if (rank == LockRank::unranked || heldLocks.find(lock))
        return;
    for (std::size_t i = 0; i < heldLocks.count; ++i) {
        const LockRank outer = heldLocks.locks[i].rank;
        if (outer == LockRank::unranked || isHeldWhileTelling(outer) || outer < rank ||
            isContainerInChange(outer, rank))
            continue;
        std::fprintf(stderr, "lock order: a lock of rank %d is taken under one of rank %d\n",
                     static_cast<int>(rank), static_cast<int>(outer));
        std::abort();
    }
}

} // namespace

CUTROOM_NO_THREAD_SAFETY void CriticalSection::lock() {
    if (kCheckRanks && rank_ != LockRank::unranked)
        checkRank(this, rank_);
    // One thread only ever takes the locks of clients, those of several Vobs in any order. The
    // sanitizer, which does not know, draws no order from a lock that was not waited for.
    if (!kThreadSanitizer || rank_ != LockRank::vobClients || !mutex_.try_lock())
        mutex_.lock();
    if (kCheckRanks && rank_ != LockRank::unranked)
        heldLocks.enter(this, rank_);
}

CUTROOM_NO_THREAD_SAFETY bool CriticalSection::tryLock() {
    if (!mutex_.try_lock())
        return false;
    if (kCheckRanks && rank_ != LockRank::unranked)
        heldLocks.enter(this, rank_);
    return true;
}

CUTROOM_NO_THREAD_SAFETY void CriticalSection::unlock() {
    if (kCheckRanks && rank_ != LockRank::unranked)
        heldLocks.leave(this);
    mutex_.unlock();
}

CUTROOM_NO_THREAD_SAFETY void SharedLock::lockRead() {
    const bool again = heldLocks.find(this) != nullptr;
    if (kCheckRanks)
        checkRank(this, rank_);
    {
        std::unique_lock lock(mutex_);
        if (writer_ == std::this_thread::get_id()) {
            ++writerDepth_;
        } else {
            // Who reads already must not wait for a writer that waits for it.
            changed_.wait(lock, [&] { return again || (writerDepth_ == 0 && !writersWaiting_); });
            ++readers_;
        }
    }
    heldLocks.enter(this, rank_);
}

CUTROOM_NO_THREAD_SAFETY void SharedLock::unlockRead() {
    heldLocks.leave(this);
    const std::lock_guard lock(mutex_);
    if (writer_ == std::this_thread::get_id())
        leaveWriter();
    else if (--readers_ == 0)
        changed_.notify_all();
}

CUTROOM_NO_THREAD_SAFETY void SharedLock::lockWrite() {
    [[maybe_unused]] const bool again = heldLocks.find(this) != nullptr;
    if (kCheckRanks) {
        checkRank(this, rank_);
        assert((rank_ != LockRank::container || heldLocks.holds(LockRank::change)) &&
               "a container is changed without the change lock");
    }
    {
        std::unique_lock lock(mutex_);
        if (writer_ != std::this_thread::get_id()) {
            assert(!again && "a reader wants to become the writer");
            ++writersWaiting_;
            changed_.wait(lock, [&] { return writerDepth_ == 0 && readers_ == 0; });
            --writersWaiting_;
            writer_ = std::this_thread::get_id();
        }
        ++writerDepth_;
    }
    heldLocks.enter(this, rank_);
}

CUTROOM_NO_THREAD_SAFETY void SharedLock::unlockWrite() {
    heldLocks.leave(this);
    const std::lock_guard lock(mutex_);
    leaveWriter();
}

void SharedLock::leaveWriter() {
    if (--writerDepth_ == 0) {
        writer_ = std::thread::id();
        changed_.notify_all();
    }
}
