#include "platform/prefs/TimedTask.h"

#include "platform/host/Clock.h"
#include "platform/host/Host.h"
#include "platform/prefs/Configuration.h"

#include <algorithm>
#include <map>

namespace {

constexpr std::size_t kMaxLabels = 1000;
constexpr std::string_view kOthers = "(others)";

struct Sum {
    std::uint64_t runs = 0;
    double total = 0;
    double longest = 0;
};

using Sums = std::map<std::string, Sum, std::less<>>;

} // namespace

struct TimedTask::State {
    struct Open {
        Sums::iterator sum; // entries of a map stay where they are
        double since;       // on the host's clock
    };

    mutable CriticalSection lock{LockRank::leaf};
    Sums sums CUTROOM_GUARDED_BY(lock);
    std::vector<Open> open CUTROOM_GUARDED_BY(lock);
};

TimedTask::TimedTask(std::string name, bool enabled)
    : name_(std::move(name)), enabled_(enabled), state_(std::make_unique<State>()) {}

TimedTask::~TimedTask() = default;

void TimedTask::begin(std::string_view label) {
    CriticalSection::Lock lock(state_->lock);
    Sums& sums = state_->sums;
    auto at = sums.find(label);
    if (at == sums.end())
        at = sums.try_emplace(std::string(sums.size() < kMaxLabels ? label : kOthers)).first;
    state_->open.push_back({at, cutroom::Host::clock().now()});
}

void TimedTask::finish() noexcept {
    const double now = cutroom::Host::clock().now();
    CriticalSection::Lock lock(state_->lock);
    if (state_->open.empty())
        return;
    const State::Open run = state_->open.back();
    state_->open.pop_back();
    const double seconds = now - run.since;
    Sum& sum = run.sum->second;
    ++sum.runs;
    sum.total += seconds;
    sum.longest = std::max(sum.longest, seconds);
}

std::vector<TimedTaskRecord> TimedTask::records() const {
    CriticalSection::Lock lock(state_->lock);
    std::vector<TimedTaskRecord> records;
    for (const auto& [label, sum] : state_->sums)
        records.push_back({label, sum.runs, sum.total, sum.longest});
    return records;
}

struct TimedTaskManager::State {
    CriticalSection lock{LockRank::leaf};
    std::vector<Kv::Ptr<TimedTask>> tasks CUTROOM_GUARDED_BY(lock);
};

TimedTaskManager::TimedTaskManager() : state_(std::make_unique<State>()) {}
TimedTaskManager::~TimedTaskManager() = default;

Kv::Ptr<TimedTask> TimedTaskManager::createTimedTask(std::string_view name) {
    const bool enabled = cutroom::configInt("timed_tasks", 1) != 0;
    State& state = *cutroom::ProcessSingleton<TimedTaskManager>::get().state_;
    CriticalSection::Lock lock(state.lock);
    for (const Kv::Ptr<TimedTask>& task : state.tasks)
        if (task->name() == name)
            return task;
    return state.tasks.emplace_back(new TimedTask(std::string(name), enabled));
}

std::vector<Kv::Ptr<TimedTask>> TimedTaskManager::tasks() {
    State& state = *cutroom::ProcessSingleton<TimedTaskManager>::get().state_;
    CriticalSection::Lock lock(state.lock);
    return state.tasks;
}
