// How the clients of a Vob are told, on the user-interface thread and from others.
#include "platform/base/Log.h"
#include "platform/messaging/UiThread.h"
#include "platform/prefs/TimedTask.h"
#include "vob/Telling.h"
#include "vob/Vob.h"
#include "vob/VobInformer.h"

#include <utility>

using cutroom::Telling;

namespace {

// Measures the time that telling takes: all of it, and each client's share.
struct Watches {
    Kv::Ptr<TimedTask> all = TimedTaskManager::createTimedTask("Vob1");
    Kv::Ptr<TimedTask> each = TimedTaskManager::createTimedTask("Vob2");
};

// Never destroyed: a host that is a static object stops playing, and tells clients, at the very end
// of the program.
const Watches& watches() {
    static const auto& once = *new cutroom::OncePerProcess<Watches>([] { return Watches(); });
    return once.get();
}

class ModificationsProxy final : public Vob::InformerProxy {
public:
    ModificationsProxy(const EditModifications& editChanges, const VobModification& change)
        : editChanges_(editChanges), change_(change) {}
    void call(VobClient& client) override { client.handleModifications(editChanges_, change_); }

private:
    const EditModifications& editChanges_;
    const VobModification& change_;
};

class OtherEditProxy final : public Vob::InformerProxy {
public:
    OtherEditProxy(const Cookie& edit, const EditModifications& changes)
        : edit_(edit), changes_(changes) {}
    void call(VobClient& client) override { client.notifyOtherEditAltered(edit_, changes_); }

private:
    const Cookie& edit_;
    const EditModifications& changes_;
};

class FocusProxy final : public Vob::InformerProxy {
public:
    explicit FocusProxy(bool hasFocus) : hasFocus_(hasFocus) {}
    void call(VobClient& client) override { client.handleConsoleFocus(hasFocus_); }

private:
    const bool hasFocus_;
};

class PlayStateProxy final : public Vob::InformerProxy {
public:
    explicit PlayStateProxy(PlayStateNotifyType change) : change_(change) {}
    void call(VobClient& client) override { client.notifyPlayStateChange(change_); }

private:
    const PlayStateNotifyType change_;
};

// Another proxy, with the time of each call kept under the client's name.
template <class Proxy> class TimedProxy final : public Vob::InformerProxy {
public:
    TimedProxy(Proxy& proxy, TimedTask& task) : proxy_(proxy), task_(task) {}
    void call(VobClient& client) override {
        const TimedTask::Run run(task_, client.idstring());
        proxy_.call(client);
    }

private:
    Proxy& proxy_;
    TimedTask& task_;
};

// Changes after which selected level nodes may be on other channels or other nodes.
constexpr std::uint64_t kDeselectsLevelNodes =
    EditModifications::bit(kModGroups) | EditModifications::bit(kModLevelNodes) |
    EditModifications::bit(kModChannelsAdded) | EditModifications::bit(kModChannelsRemoved) |
    EditModifications::bit(kModEventsAdded) | EditModifications::bit(kModEventsRemoved) |
    EditModifications::bit(kModRestored) | EditModifications::bit(kModFlattened);

} // namespace

// --- the walk ------------------------------------------------------------------------------------

// A Vob whose last share goes meanwhile is destroyed at the end of the outermost telling.
template <class Proxy> void Vob::informClientsSafe(Proxy& proxy) {
    const Watches& timed = watches();
    const TimedTask::Run run(*timed.all, "inform");
    {
        const CriticalSection::Lock lock(clientLock_);
        if (clients_.empty())
            return;
        const cutroom::NestedTelling nested("Vob::informClients()");
        if (nested.refused())
            return;
        Telling telling(tellings_, clients_.size());
        if (timed.each->enabled()) {
            TimedProxy<Proxy> timing(proxy, *timed.each);
            tellAll(timing, telling);
        } else {
            tellAll(proxy, telling);
        }
        if (!diesAfterTelling_ || telling.isInner())
            return;
    }
    destroyWhenTold();
}

// Most lists do not change while they are told: one walk, without looking anything up.
template <class Proxy> void Vob::tellAll(Proxy& proxy, Telling& telling) {
    VobClient* const* const clients = clients_.data();
    const std::size_t count = clients_.size();
    for (std::size_t i = 0; i < count; ++i) {
        telling.setTold(i + 1);
        tellOne(proxy, *clients[i]);
        if (telling.listChanged()) {
            tellChangedList(proxy, telling, i + 1);
            return;
        }
    }
}

// Goes on at `next`; walks again until a walk finds nobody to tell.
template <class Proxy> void Vob::tellChangedList(Proxy& proxy, Telling& telling, std::size_t next) {
    for (bool calledAny = true; calledAny; next = 0) {
        calledAny = next > 0; // the first walk has called those before `next`
        for (std::size_t i = next; i < clients_.size(); ++i) {
            VobClient* const client = clients_[i];
            if (!telling.begin(*client))
                continue;
            calledAny = true;
            tellOne(proxy, *client);
            if (telling.isRunaway()) {
                LogBoth("Vob::informClients() : too many clients told, stopped at %u\n",
                        static_cast<unsigned>(clients_.size()));
                return;
            }
        }
    }
}

// The client may be gone afterwards.
template <class Proxy> inline void Vob::tellOne(Proxy& proxy, VobClient& client) {
    try {
        proxy.call(client);
    } catch (...) {
        cutroom::logFailedClient("Vob::informClients()");
    }
}

// --- the kinds of telling ------------------------------------------------------------------------

void Vob::informClients(const VobModification& change) {
    static const EditModifications kNoEditChanges;
    if (cutroom::isUiThread())
        report(kNoEditChanges, change);
    else
        informClientsAsync(change);
}

void Vob::informClients(const EditModifications& editChanges, const VobModification& change) {
    if (cutroom::isUiThread())
        report(editChanges, change);
    else
        informClientsAsync(editChanges);
}

void Vob::report(const EditModifications& editChanges, const VobModification& change) {
    const bool wantsTime = change.includes(kVobTime) && change.getTime() == kNoTime;
    if (editChanges.empty() && change.valid() && !described_.load(std::memory_order_acquire) &&
        !change.includes(kVobViewRegion) && !wantsTime) {
        ModificationsProxy proxy(editChanges, change); // as it is: no copy
        informClientsSafe(proxy);
        return;
    }
    VobModification told = takeDescription(editChanges, change);
    if (!editChanges.empty())
        told.addModification(std::exchange(carried_, 0u));
    if (told.includes(kVobViewRegion))
        extents_ = editRange();
    else if (validateViewRegion(editChanges))
        told.addModification(kVobViewRegion);
    if (editChanges.includesAnyOf(kDeselectsLevelNodes) && deselectAllLevelNodes())
        told.addModification(kVobLevelNodes);
    if (told.includes(kVobTime) && told.getTime() == kNoTime)
        told.setTime(getCurrentTime());
    ModificationsProxy proxy(editChanges, told);
    informClientsSafe(proxy);
}

void Vob::informFocusChanged(bool hasFocus) {
    if (!cutroom::isUiThread()) {
        cutroom::postToUiThread([self = keepAlive(), hasFocus] {
            if (self)
                self->informFocusChanged(hasFocus);
        });
        return;
    }
    FocusProxy proxy(hasFocus);
    informClientsSafe(proxy);
}

void Vob::informPlayStateChange(PlayStateNotifyType change) {
    if (!cutroom::isUiThread()) {
        cutroom::postToUiThread([self = keepAlive(), change] {
            if (self)
                self->informPlayStateChange(change);
        });
        return;
    }
    PlayStateProxy proxy(change);
    informClientsSafe(proxy);
}

void Vob::informOtherEditAltered(const Cookie& edit, const EditModifications& changes) {
    if (!cutroom::isUiThread()) {
        cutroom::postToUiThread([self = keepAlive(), edit, changes] {
            if (self)
                self->informOtherEditAltered(edit, changes);
        });
        return;
    }
    OtherEditProxy proxy(edit, changes);
    informClientsSafe(proxy);
}
