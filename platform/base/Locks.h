// The locks: a recursive mutex and a reader/writer lock whose holder may enter again. All are used
// through scoped objects only.
//
// Debug builds check that locks are taken in the order of their ranks (docs/threads.md): a lock
// with a rank may only be taken while every ranked lock held by the thread has a lower rank, or is
// the same object. The two locks that are held while others are told (vobClients, notifier) obey
// that when they are taken, and allow everything inside: a listener may do what it likes.
// Containers have one lock each: a writer takes the change lock first, and so does a reader that
// takes the lock of one container under that of another.
#pragma once

#include "platform/base/Annotations.h"
#include "platform/base/Export.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

// Ranks of the locks that are ever held together, from the outermost to the innermost. 0: not
// checked.
enum class LockRank : int {
    making = -1, // the making of a single object: not checked, first uses come in any order
    unranked = 0,
    saveAll = 10,     // one whole save of a manager's containers
    change = 15,      // a change of any container, and its telling: one for the whole process
    container = 20,   // a container's contents
    vobClients = 30,  // a Vob's client list; held while its clients are told
    notifier = 40,    // a listener list; held while its listeners are told
    managerMaps = 50, // a manager's maps: a leaf towards containers
    edit = 60,        // one edit
    editManager = 70, // the table of open edits
    vobPending = 80,  // a Vob's pending record
    database = 90,    // the project database
    leaf = 100,       // anything held for a few lines without calling out
};

// A recursive mutex.
class CUTROOM_API CUTROOM_CAPABILITY("mutex") CriticalSection {
public:
    explicit CriticalSection(LockRank rank = LockRank::unranked) noexcept : rank_(rank) {}
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void lock() CUTROOM_ACQUIRE();
    // Takes the section if that needs no waiting; false otherwise. Ranks do not matter.
    bool tryLock() CUTROOM_TRY_ACQUIRE(true);
    void unlock() CUTROOM_RELEASE();

    // Holds the section for its own lifetime.
    class CUTROOM_SCOPED_CAPABILITY Lock {
    public:
        explicit Lock(CriticalSection& section) CUTROOM_ACQUIRE(section) : section_(section) {
            section_.lock();
        }
        ~Lock() CUTROOM_RELEASE() { section_.unlock(); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        CriticalSection& section_;
    };

private:
    std::recursive_mutex mutex_;
    const LockRank rank_;
};

// A reader/writer lock. The writer may enter again as writer and as reader; a reader may enter
// again even while a writer waits. Becoming a writer while holding it only as a reader is a
// programming error (asserted).
class CUTROOM_API CUTROOM_CAPABILITY("shared_mutex") SharedLock {
public:
    explicit SharedLock(LockRank rank = LockRank::unranked) noexcept : rank_(rank) {}
    SharedLock(const SharedLock&) = delete;
    SharedLock& operator=(const SharedLock&) = delete;

    void lockRead() CUTROOM_ACQUIRE_SHARED();
    void unlockRead() CUTROOM_RELEASE_SHARED();
    void lockWrite() CUTROOM_ACQUIRE();
    void unlockWrite() CUTROOM_RELEASE();

    class CUTROOM_SCOPED_CAPABILITY Read {
    public:
        explicit Read(SharedLock& lock) CUTROOM_ACQUIRE_SHARED(lock) : lock_(lock) {
            lock_.lockRead();
        }
        ~Read() CUTROOM_RELEASE() { lock_.unlockRead(); }
        Read(const Read&) = delete;
        Read& operator=(const Read&) = delete;

    private:
        SharedLock& lock_;
    };
    class CUTROOM_SCOPED_CAPABILITY Write {
    public:
        explicit Write(SharedLock& lock) CUTROOM_ACQUIRE(lock) : lock_(lock) { lock_.lockWrite(); }
        ~Write() CUTROOM_RELEASE() { lock_.unlockWrite(); }
        Write(const Write&) = delete;
        Write& operator=(const Write&) = delete;

    private:
        SharedLock& lock_;
    };

private:
    static constexpr std::uint32_t kWriter = 1u << 31;
    void leave();

    // The number of threads that read, and kWriter while a writer is in or waits.
    std::atomic<std::uint32_t> state_{0};
    std::mutex mutex_; // held to set and clear kWriter, and to wait
    std::condition_variable changed_;
    bool writerIsIn_ = false; // guarded by mutex_
    int writersWaiting_ = 0;  // guarded by mutex_
    const LockRank rank_;
};
