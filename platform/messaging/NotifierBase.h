// `NotifierBase`: a list of listeners and the one guarded walk that tells them. Every notifier,
// published value and container stands on it.
//
// Rules for all of them:
// - Any thread may register, drop a guard or tell. A telling runs on the telling thread with the
//   notifier's recursive lock held, so a listener must not wait for another thread that tells
//   through the same notifier.
// - Listeners are told in the order of registration. One that is registered during a telling is
//   not told of that message (nested tellings that begin later do reach it); one whose guard is
//   dropped during a telling is not told any more.
// - Dropping a guard is safe at any moment. Outside of any telling it waits for a telling of that
//   notifier on another thread, so the listener is never called after the drop has returned; who
//   drops it there holds no lock that a listener takes. A thread that is inside a telling does not
//   wait (two threads could wait for each other): there, a call already under way on another
//   thread may still finish after the drop.
// - A guard may outlive its notifier. A listener may destroy the notifier that is telling it: the
//   telling ends there.
// - What a listener throws is logged and the others are told all the same.
// - A runaway (listeners that tell again whenever they are told) is cut off, with a log line, at
//   10,000 calls or 8 times the listeners at the start of the outermost telling, whichever is more,
//   and at 1,000 tellings inside one another, so that the stack holds.
// - Telling n listeners costs O(n) and allocates nothing; with no listeners no lock is taken.
#pragma once

#include "platform/base/Annotations.h"
#include "platform/base/Guard.h"
#include "platform/base/Locks.h"
#include "platform/messaging/Callback.h"
#include "platform/messaging/CallbackInvoker.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

namespace cutroom {

// A registration that ends but could not be taken out at once; waits in its list's stack.
struct EndedRegistration {
    std::uint64_t number = 0;
    EndedRegistration* next = nullptr;
};

// The list behind a notifier, shared with its guards, so that either may be destroyed first.
class CUTROOM_API ListenerList final : public Kv::InternalRefCount {
public:
    ListenerList();
    ~ListenerList() override;

    // Appends a listener; the guard takes it out. An empty guard for a null callback, a negative
    // type or a closed list. Any thread.
    Kv::Ptr<Guard> add(Kv::Ptr<CallbackRoot> callback, int msgType);
    // Ends every registration; called as the notifier goes. Waits for tellings on other threads.
    void close() noexcept;
    // The number of listeners of all types. Any thread, no lock.
    std::size_t count() const noexcept { return live_.load(std::memory_order_acquire); }

    // Calls `callback->call(message)` of each listener of the type, under the lock.
    template <class Msg> void tell(const Msg& message, int msgType);

private:
    friend class ListenerGuard;
    class Walk;

    // Calls one listener of messages of this class; the callback stays alive until the outermost
    // telling ends, whoever removes it.
    template <class Msg> static void callListener(CallbackRoot& callback, const Msg& message);
    // Ends a registration and takes its entry over.
    void remove(EndedRegistration* entry) noexcept;
    // Ends the registration of that number; null when it has ended already. The callback stays in
    // its place, since it may be running.
    CallbackInvokerBase* end(std::uint64_t number) noexcept CUTROOM_REQUIRES(lock_);
    // Ends what waits in the stack of ended registrations.
    void takeEnded() noexcept CUTROOM_REQUIRES(lock_);
    // Moves callbacks of ended entries into `out`; closes gaps when none is left. False when none
    // was there.
    bool collect(std::array<Kv::Ptr<CallbackRoot>, 32>& out) noexcept CUTROOM_REQUIRES(lock_);
    void closeGaps() noexcept CUTROOM_REQUIRES(lock_);
    // Drops, outside the lock, what ended meanwhile. Does not wait: a thread that holds the lock
    // does this when it leaves.
    void settle() noexcept;
    static void logThrown(const char* what) noexcept;
    void cutOff() noexcept CUTROOM_REQUIRES(lock_);

    CriticalSection lock_{LockRank::notifier};
    // In the order of registration. Ended entries stay as gaps until many have gathered, and at
    // least until the outermost telling ends.
    std::vector<CallbackInvokerBase> entries_ CUTROOM_GUARDED_BY(lock_);
    // The number of each registration, rising; apart, so that a telling reads less memory.
    std::vector<std::uint64_t> numbers_ CUTROOM_GUARDED_BY(lock_);
    std::uint64_t lastNumber_ CUTROOM_GUARDED_BY(lock_) = 0;
    std::size_t gaps_ CUTROOM_GUARDED_BY(lock_) = 0;      // ended entries
    std::size_t unswept_ CUTROOM_GUARDED_BY(lock_) = 0;   // of these, those that hold a callback
    int depth_ CUTROOM_GUARDED_BY(lock_) = 0;             // tellings inside one another
    Walk* innermost_ CUTROOM_GUARDED_BY(lock_) = nullptr; // the telling that is going on
    bool cutOff_ CUTROOM_GUARDED_BY(lock_) = false;
    bool closed_ CUTROOM_GUARDED_BY(lock_) = false;
    Kv::Ptr<ListenerList> kept_ CUTROOM_GUARDED_BY(lock_); // itself, when closed inside a telling
    std::atomic<std::size_t> live_{0};
    std::atomic<EndedRegistration*> ended_{nullptr};
    // The present telling must look up before its next call: a registration was added, or waits in
    // `ended_`, or a telling took place inside it.
    std::atomic<bool> disturbed_{false};
};

// One telling: holds the lock of its list, and knows how far it is. It goes through the list in
// stretches; one ends early when a call did something that the telling must look at.
class CUTROOM_API CUTROOM_SCOPED_CAPABILITY ListenerList::Walk {
public:
    Walk(ListenerList& list, int msgType) noexcept CUTROOM_ACQUIRE(list.lock_);
    ~Walk() CUTROOM_RELEASE();
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    // Prepares the next stretch, up to `stretchEnd`; the first one is ready, unless the telling may
    // not begin. False when the telling is over.
    bool nextStretch() noexcept { return at_ < size_ && stretch(); }
    std::size_t stretchEnd() const noexcept { return stretchEnd_; }
    // The entry to look at next.
    std::size_t at() const noexcept { return at_; }
    void moveTo(std::size_t at) noexcept { at_ = at; }

private:
    bool stretch() noexcept;
    void countCalls() noexcept;

    ListenerList& list_;
    Walk* outer_ = nullptr; // the telling inside of which this one is
    const int msgType_;
    std::size_t size_ = 0; // entries when the telling began; 0 when it may not begin
    std::size_t at_ = 0;
    std::size_t counted_ = 0;    // entries whose calls are taken off `callsLeft_`
    std::size_t callsLeft_ = 0;  // for this telling and those inside it
    std::size_t stretchEnd_ = 0; // never further than `callsLeft_` calls
};

} // namespace cutroom

// Owns a list of listeners. A copy has its own, empty list; assignment leaves the lists alone.
class CUTROOM_API NotifierBase {
public:
    NotifierBase();
    NotifierBase(const NotifierBase&);
    NotifierBase& operator=(const NotifierBase&) noexcept { return *this; }
    // Ends all registrations.
    virtual ~NotifierBase();

    // The number of registered listeners, of all types. Any thread, no lock.
    std::size_t numListeners() const noexcept { return list_->count(); }
    bool hasListeners() const noexcept { return numListeners() != 0; }

protected:
    // Registers `callback`, which must take the messages that this notifier tells.
    Kv::Ptr<Guard> addCallback(Kv::Ptr<cutroom::CallbackRoot> callback, int msgType) const {
        return list_->add(std::move(callback), msgType);
    }
    // Tells every listener of the type.
    template <class Msg> void tellAll(const Msg& message, int msgType) const {
        if (list_->count() != 0)
            list_->tell(message, msgType);
    }

private:
    Kv::Ptr<cutroom::ListenerList> list_;
};

// ------------------------------------------------------------------------------------------------

template <class Msg> void cutroom::ListenerList::tell(const Msg& message, int msgType) {
    Walk walk(*this, msgType);
    do {
        const CallbackInvokerBase* const entries = entries_.data();
        const std::size_t end = walk.stretchEnd();
        std::size_t i = walk.at();
        while (i < end) {
            const CallbackInvokerBase& entry = entries[i++];
            if (!entry.typeMatch(msgType))
                continue;
            walk.moveTo(i);
            callListener(*entry.callback(), message);
            if (disturbed_.load(std::memory_order_acquire))
                break;
        }
        walk.moveTo(i);
    } while (walk.nextStretch());
}

template <class Msg>
inline void cutroom::ListenerList::callListener(CallbackRoot& callback, const Msg& message) {
    try {
        static_cast<iCallbackBase<int, Msg>&>(callback).call(message);
    } catch (const std::exception& thrown) {
        logThrown(thrown.what());
    } catch (...) {
        logThrown("an object that is no exception");
    }
}
