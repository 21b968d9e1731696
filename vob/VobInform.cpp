// How the clients of a Vob are told, on the user-interface thread and from others.
#include "platform/base/Log.h"
#include "platform/messaging/UiThread.h"
#include "platform/prefs/TimedTask.h"
#include "vob/Telling.h"
#include "vob/Vob.h"
#include "vob/VobInformer.h"

#include <exception>

using cutroom::Telling;

namespace {

// Where the time of telling goes: all of it, and each client's share.
struct Watches {
    Kv::Ptr<TimedTask> all = TimedTaskManager::createTimedTask("Vob1");
    Kv::Ptr<TimedTask> each = TimedTaskManager::createTimedTask("Vob2");
};

const Watches& watches() {
    static const cutroom::OncePerProcess<Watches> once([] { return Watches(); });
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

// Channels and nodes that level nodes may have been selected on came, went or were replaced.
constexpr std::uint64_t kDeselectsLevelNodes =
    EditModifications::bit(kModGroups) | EditModifications::bit(kModLevelNodes) |
    EditModifications::bit(kModChannelsAdded) | EditModifications::bit(kModChannelsRemoved) |
    EditModifications::bit(kModEventsAdded) | EditModifications::bit(kModEventsRemoved) |
    EditModifications::bit(kModRestored) | EditModifications::bit(kModFlattened);

} // namespace

// --- the kinds of telling ------------------------------------------------------------------------

void Vob::informClients(const VobModification& change) {
    static const EditModifications kNoEditChanges;
    if (cutroom::isUiThread())
        informClients(kNoEditChanges, change);
    else
        informClientsAsync(change);
}

void Vob::informClients(const EditModifications& editChanges, const VobModification& change) {
    if (!cutroom::isUiThread()) {
        informClientsAsync(editChanges);
        return;
    }
    VobModification report = takeDescription(editChanges, change);
    if (!editChanges.empty())
        report.addModification(std::exchange(carried_, 0u));
    if (report.includes(kVobViewRegion))
        extents_ = editRange();
    else if (validateViewRegion(editChanges))
        report.addModification(kVobViewRegion);
    if (editChanges.includesAnyOf(kDeselectsLevelNodes) && deselectAllLevelNodes())
        report.addModification(kVobLevelNodes);
    if (report.includes(kVobTime) && report.getTime() == kNoTime)
        report.setTime(getCurrentTime());
    ModificationsProxy proxy(editChanges, report);
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

// --- the walk ------------------------------------------------------------------------------------

void Vob::informClientsSafe(InformerProxy& proxy) {
    const Watches& timed = watches();
    const TimedTask::Run run(*timed.all, "inform");
    const Kv::Ptr<Vob> self = keepAlive();
    const CriticalSection::Lock lock(clientLock_);
    if (clients_.empty())
        return;
    Telling telling(tellings_, clients_.size());
    tellAll(proxy, telling, timed.each->enabled() ? timed.each.get() : nullptr);
}

// Walks again as long as the list has changed and a walk has found somebody to tell.
void Vob::tellAll(InformerProxy& proxy, Telling& telling, TimedTask* timed) {
    bool calledAny = true;
    while (calledAny) {
        calledAny = false;
        for (std::size_t i = 0; i < clients_.size(); ++i) {
            VobClient* const client = clients_[i];
            if (!telling.begin(*client, i))
                continue;
            calledAny = true;
            tellOne(proxy, *client, timed);
            if (telling.isRunaway()) {
                LogBoth("Vob::informClients() : too many clients told, stopped at %u\n",
                        static_cast<unsigned>(clients_.size()));
                return;
            }
        }
        if (!telling.listChanged())
            return;
    }
}

// One client's failure is not the others' business. The client may be gone afterwards.
void Vob::tellOne(InformerProxy& proxy, VobClient& client, TimedTask* timed) {
    if (timed)
        timed->start(client.idstring());
    try {
        proxy.call(client);
    } catch (const std::exception& error) {
        LogBoth("Vob::informClients() : a client failed: %s\n", error.what());
    } catch (...) {
        LogBoth("Vob::informClients() : a client failed\n");
    }
    if (timed)
        timed->stop();
}
