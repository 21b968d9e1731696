#include "platform/messaging/NotifierBase.h"

#include "platform/base/Log.h"
#include "platform/messaging/GuardedCallback.h"

#include <algorithm>

namespace cutroom {

namespace {

// Where a runaway is cut off: calls within one outermost telling, and tellings inside one another.
constexpr std::size_t kMostCalls = 10'000;
constexpr std::size_t kMostCallsPerListener = 8;
constexpr int kMostDepth = 1'000;

// How many tellings this thread is inside of, through whatever notifiers.
[[gnu::tls_model("initial-exec")]] thread_local constinit int tellingsOfThread = 0;

} // namespace

// Ends one registration.
class ListenerGuard final : public Guard {
public:
    ListenerGuard(Kv::Ptr<ListenerList> list, const CallbackRoot& callback, std::uint64_t number)
        : list_(std::move(list)), entry_(new EndedRegistration{number, nullptr}) {
        if (const auto* const guarded = dynamic_cast<const iGuardedCallback*>(&callback))
            count_ = guarded->guardCount();
        if (count_)
            count_->fetch_add(1, std::memory_order_acq_rel);
    }
    ~ListenerGuard() override {
        if (count_)
            count_->fetch_sub(1, std::memory_order_acq_rel);
        list_->remove(entry_);
    }

private:
    const Kv::Ptr<ListenerList> list_;
    EndedRegistration* const entry_;     // made early, since ending must not fail
    iGuardedCallback::GuardCount count_; // null for callbacks that ask for none
};

ListenerList::ListenerList() = default;

ListenerList::~ListenerList() {
    EndedRegistration* entry = ended_.load();
    while (entry)
        delete std::exchange(entry, entry->next);
}

Kv::Ptr<Guard> ListenerList::add(Kv::Ptr<CallbackRoot> callback, int msgType) {
    if (!callback || msgType < 0)
        return {};
    Kv::Ptr<Guard> guard;
    {
        const CriticalSection::Lock lock(lock_);
        if (closed_)
            return {};
        CallbackRoot& added = *callback;
        const std::uint64_t number = ++lastNumber_;
        guard = Kv::Ptr<Guard>(new ListenerGuard(Kv::Ptr<ListenerList>(this), added, number));
        numbers_.push_back(number);
        try {
            entries_.emplace_back(msgType, std::move(callback));
        } catch (...) {
            numbers_.pop_back();
            throw;
        }
        if (depth_ > 0)
            disturbed_.store(true, std::memory_order_relaxed);
        live_.fetch_add(1, std::memory_order_acq_rel);
        added.registrationBegun();
    }
    if (ended_.load())
        settle();
    return guard;
}

void ListenerList::remove(EndedRegistration* entry) noexcept {
    if (!lock_.tryLock()) {
        if (tellingsOfThread > 0) {
            // To wait here could be to wait for a thread that waits for this one.
            EndedRegistration* top = ended_.load();
            do
                entry->next = top;
            while (!ended_.compare_exchange_weak(top, entry));
            disturbed_.store(true);
            settle();
            return;
        }
        lock_.lock();
    }
    Kv::Ptr<CallbackRoot> callback;
    CallbackInvokerBase* const listener = end(entry->number);
    if (listener && depth_ == 0) {
        callback = listener->takeCallback();
        --unswept_;
        closeGaps();
    }
    lock_.unlock();
    delete entry;
    if (ended_.load())
        settle();
}

CallbackInvokerBase* ListenerList::end(std::uint64_t number) noexcept {
    const auto found = std::lower_bound(numbers_.begin(), numbers_.end(), number);
    if (found == numbers_.end() || *found != number)
        return nullptr;
    CallbackInvokerBase* const at = &entries_[static_cast<std::size_t>(found - numbers_.begin())];
    if (at->ended())
        return nullptr;
    live_.fetch_sub(1, std::memory_order_acq_rel);
    at->end();
    ++gaps_;
    at->callback()->registrationEnded();
    ++unswept_;
    return at;
}

void ListenerList::takeEnded() noexcept {
    EndedRegistration* entry = ended_.exchange(nullptr);
    while (entry) {
        end(entry->number);
        delete std::exchange(entry, entry->next);
    }
}

bool ListenerList::collect(std::array<Kv::Ptr<CallbackRoot>, 32>& out) noexcept {
    if (unswept_ == 0 || depth_ > 0)
        return false;
    std::size_t taken = 0;
    for (CallbackInvokerBase& entry : entries_) {
        if (!entry.ended() || !entry.callback())
            continue;
        out[taken++] = entry.takeCallback();
        if (--unswept_ == 0 || taken == out.size())
            break;
    }
    closeGaps();
    return true;
}

void ListenerList::closeGaps() noexcept {
    if (depth_ > 0 || unswept_ > 0 || gaps_ * 2 <= entries_.size())
        return;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].ended())
            continue;
        if (kept != i) {
            entries_[kept] = std::move(entries_[i]);
            numbers_[kept] = numbers_[i];
        }
        ++kept;
    }
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(kept), entries_.end());
    numbers_.resize(kept);
    gaps_ = 0;
}

void ListenerList::settle() noexcept {
    for (bool more = true; more || ended_.load();) {
        std::array<Kv::Ptr<CallbackRoot>, 32> callbacks;
        if (!lock_.tryLock())
            return;
        takeEnded();
        more = collect(callbacks);
        lock_.unlock();
    }
}

void ListenerList::close() noexcept {
    std::vector<CallbackInvokerBase> gone;
    {
        const CriticalSection::Lock lock(lock_);
        takeEnded();
        closed_ = true;
        for (CallbackInvokerBase& entry : entries_) {
            if (entry.ended())
                continue;
            entry.end();
            entry.callback()->registrationEnded();
            ++gaps_;
            ++unswept_;
        }
        live_.store(0, std::memory_order_release);
        if (depth_ > 0) {
            kept_ = Kv::Ptr<ListenerList>(this);
        } else {
            gone.swap(entries_);
            numbers_.clear();
            gaps_ = unswept_ = 0;
        }
    }
}

void ListenerList::logThrown(const char* what) noexcept {
    LogBoth("Notifier: a listener failed: %s\n", what);
}

void ListenerList::cutOff() noexcept {
    if (!cutOff_)
        LogBoth("Notifier: cut off a runaway telling of %zu listeners\n",
                live_.load(std::memory_order_relaxed));
    cutOff_ = true;
}

ListenerList::Walk::Walk(ListenerList& list, int msgType) noexcept
    : list_(list), msgType_(msgType) {
    list.lock_.lock();
    ++tellingsOfThread;
    outer_ = std::exchange(list.innermost_, this);
    if (list.depth_++ == 0) {
        list.cutOff_ = false;
        callsLeft_ = std::max(kMostCalls, kMostCallsPerListener * list.live_.load());
    } else {
        outer_->countCalls();
        callsLeft_ = outer_->callsLeft_;
    }
    if (list.depth_ > kMostDepth) {
        list.cutOff();
        return;
    }
    size_ = list.entries_.size();
    if (size_ > callsLeft_ || list.disturbed_.load(std::memory_order_relaxed))
        stretch();
    else
        stretchEnd_ = size_;
}

ListenerList::Walk::~Walk() {
    Kv::Ptr<ListenerList> last;
    bool unswept = false;
    list_.innermost_ = outer_;
    if (outer_) {
        countCalls();
        outer_->callsLeft_ = callsLeft_;
        list_.disturbed_.store(true, std::memory_order_relaxed);
    }
    if (--list_.depth_ == 0) {
        if (list_.closed_)
            last.swap(list_.kept_);
        unswept = list_.unswept_ > 0;
    }
    --tellingsOfThread;
    list_.lock_.unlock();
    if (unswept || list_.ended_.load())
        list_.settle();
}

CUTROOM_NO_THREAD_SAFETY bool ListenerList::Walk::stretch() noexcept {
    if (list_.disturbed_.load(std::memory_order_relaxed)) {
        list_.disturbed_.exchange(false);
        list_.takeEnded();
    }
    countCalls();
    if (callsLeft_ == 0) {
        list_.cutOff();
        size_ = 0;
        return false;
    }
    stretchEnd_ = std::min(size_, at_ + callsLeft_);
    return true;
}

CUTROOM_NO_THREAD_SAFETY void ListenerList::Walk::countCalls() noexcept {
    for (; counted_ < at_; ++counted_) {
        const CallbackInvokerBase& entry = list_.entries_[counted_];
        if (callsLeft_ > 0 && (entry.typeMatch(msgType_) || entry.ended()))
            --callsLeft_;
    }
}

} // namespace cutroom

NotifierBase::NotifierBase() : list_(new cutroom::ListenerList) {}
NotifierBase::NotifierBase(const NotifierBase&) : NotifierBase() {}
NotifierBase::~NotifierBase() { list_->close(); }
