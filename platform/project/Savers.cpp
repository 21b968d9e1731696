#include "platform/project/Savers.h"

#include "platform/base/Locks.h"
#include "platform/host/ProcessLife.h"
#include "platform/messaging/Notifier.h"
#include "platform/messaging/UIThreadCallback.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

namespace cutroom {

namespace {

constexpr int kChangesType = 1;

struct SaverList {
    static SaverList& instance() { return ProcessSingleton<SaverList>::get(); }

    // A copy: a saver may go while another saves.
    std::vector<Saver> all() const {
        const CriticalSection::Lock held(lock);
        std::vector<Saver> savers;
        for (const auto& [number, saver] : entries)
            savers.push_back(saver);
        return savers;
    }

    mutable CriticalSection lock{LockRank::leaf};
    std::vector<std::pair<int, Saver>> entries CUTROOM_GUARDED_BY(lock);
    static inline std::atomic<int> lastNumber{0}; // of all lives: a guard may outlive its own
    Status failure CUTROOM_GUARDED_BY(lock);
    std::atomic<int> changes{0};
    Notifier notifier;
};

void removeSaver(int number) {
    SaverList* const list = ProcessSingleton<SaverList>::find();
    if (!list)
        return;
    const CriticalSection::Lock held(list->lock);
    std::erase_if(list->entries, [=](const auto& entry) { return entry.first == number; });
}

} // namespace

Kv::Ptr<Guard> Savers::add(Saver saver) {
    SaverList& list = SaverList::instance();
    const CriticalSection::Lock held(list.lock);
    const int number = ++list.lastNumber;
    list.entries.emplace_back(number, std::move(saver));
    return Kv::makePtr<Kv::ActionGuard>([number] { removeSaver(number); });
}

Status Savers::saveAll() {
    Status first;
    for (const Saver& saver : SaverList::instance().all()) {
        const Status saved = saver.save();
        if (first.ok() && !saved)
            first = Status(saved.code(), saved.file(), saver.name + ": " + saved.message(),
                           saved.line());
    }
    return first;
}

bool Savers::anyDirty() {
    const std::vector<Saver> savers = SaverList::instance().all();
    return std::any_of(savers.begin(), savers.end(),
                       [](const Saver& saver) { return saver.anyDirty(); });
}

void Savers::noteChange() {
    SaverList* const list = ProcessSingleton<SaverList>::find(); // none: nobody counts
    if (!list)
        return;
    const int count = list->changes.fetch_add(1) + 1;
    if (count == 1 || count == kManyChanges)
        list->notifier.call(NotifyMsg(), kChangesType);
}

int Savers::takeChanges() { return SaverList::instance().changes.exchange(0); }

int Savers::changes() { return SaverList::instance().changes.load(); }

Kv::Ptr<Guard> Savers::addListener(const CallbackPtr<NotifyMsg>& callback) {
    if (!callback)
        return {};
    return SaverList::instance().notifier.registerNotification(
        Kv::makePtr<UIThreadCallback<NotifyMsg>>(callback), kChangesType);
}

void Savers::noteFailure(const Status& failure) {
    SaverList& list = SaverList::instance();
    const CriticalSection::Lock held(list.lock);
    if (list.failure.ok())
        list.failure = failure;
}

Status Savers::takeFailure() {
    SaverList& list = SaverList::instance();
    const CriticalSection::Lock held(list.lock);
    return std::exchange(list.failure, Status());
}

} // namespace cutroom
