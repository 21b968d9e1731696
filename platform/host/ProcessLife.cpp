#include "platform/host/ProcessLife.h"

#include <vector>

namespace cutroom {

namespace {

struct Tasks {
    CriticalSection lock{LockRank::leaf};
    std::vector<std::function<void()>> list CUTROOM_GUARDED_BY(lock);
    std::atomic<bool> ending{false};
};

// Never destroyed: static objects of the program may still ask while it exits.
Tasks& tasks() {
    static Tasks* const all = new Tasks;
    return *all;
}

std::function<void()> takeLast() {
    Tasks& all = tasks();
    CriticalSection::Lock lock(all.lock);
    std::function<void()> last;
    if (!all.list.empty()) {
        last = std::move(all.list.back());
        all.list.pop_back();
    }
    return last;
}

} // namespace

void ProcessLife::atEnd(std::function<void()> task) {
    Tasks& all = tasks();
    CriticalSection::Lock lock(all.lock);
    all.list.push_back(std::move(task));
}

bool ProcessLife::ending() noexcept { return tasks().ending.load(std::memory_order_acquire); }

void ProcessLife::end() noexcept {
    tasks().ending.store(true, std::memory_order_release);
    while (const std::function<void()> task = takeLast())
        task();
    tasks().ending.store(false, std::memory_order_release);
}

CriticalSection& ProcessLife::making() noexcept {
    static CriticalSection* const section = new CriticalSection(LockRank::making);
    return *section;
}

} // namespace cutroom
