#include "platform/messaging/NotifierBase.h"

#include "platform/base/Log.h"

#include <algorithm>

namespace cutroom {

namespace {

// Where a runaway is cut off: calls within one outermost telling, and tellings inside one another.
constexpr std::size_t kMostCalls = 10'000;
constexpr std::size_t kMostCallsPerListener = 8;
constexpr int kMostDepth = 1'000;

// How many tellings this thread is inside of, through whatever notifiers.
thread_local constinit int tellingsOfThread = 0;

} // namespace

// Ends one registration.
class ListenerGuard final : public Guard {
public:
    ListenerGuard(Kv::Ptr<ListenerList> list, std::uint64_t number)
        : list_(std::move(list)), entry_(new EndedRegistration{number, nullptr}) {}
    ~ListenerGuard() override { list_->remove(entry_); }

private:
    const Kv::Ptr<ListenerList> list_;
    EndedRegistration* const entry_; // made early, since ending must not fail
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
        guard = Kv::Ptr<Guard>(new ListenerGuard(Kv::Ptr<ListenerList>(this), number));
        entries_.emplace_back(msgType, number, std::move(callback));
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
    const auto at = std::lower_bound(
        entries_.begin(), entries_.end(), number,
        [](const CallbackInvokerBase& entry, std::uint64_t n) { return entry.number() < n; });
    if (at == entries_.end() || at->number() != number || at->ended())
        return nullptr;
    live_.fetch_sub(1, std::memory_order_acq_rel);
    at->end();
    ++gaps_;
    at->callback()->registrationEnded();
    ++unswept_;
    return &*at;
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
    std::erase_if(entries_, [](const CallbackInvokerBase& entry) { return entry.ended(); });
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
            gaps_ = unswept_ = 0;
        }
    }
}

void ListenerList::logThrown(const char* what) noexcept {
    LogBoth("Notifier: a listener failed: %s\n", what);
}

void ListenerList::logRunaway() noexcept {
    if (!cutOff_)
        LogBoth("Notifier: cut off a runaway telling of %zu listeners\n",
                live_.load(std::memory_order_relaxed));
    cutOff_ = true;
}

ListenerList::Walk::Walk(ListenerList& list) noexcept : list_(list) {
    list.lock_.lock();
    ++tellingsOfThread;
    if (list.depth_++ == 0) {
        list.cutOff_ = false;
        list.callsLeft_ = static_cast<std::ptrdiff_t>(
            std::max(kMostCalls, kMostCallsPerListener * list.live_.load()));
    }
    if (list.depth_ > kMostDepth)
        list.logRunaway();
    else
        size_ = list.entries_.size();
}

ListenerList::Walk::~Walk() {
    Kv::Ptr<ListenerList> last;
    bool resting = false;
    if (--list_.depth_ == 0) {
        last.swap(list_.kept_);
        resting = list_.unswept_ > 0;
    }
    --tellingsOfThread;
    list_.lock_.unlock();
    if (resting || list_.ended_.load())
        list_.settle();
}

} // namespace cutroom

NotifierBase::NotifierBase() : list_(new cutroom::ListenerList) {}
NotifierBase::NotifierBase(const NotifierBase&) : NotifierBase() {}
NotifierBase::~NotifierBase() { list_->close(); }
