// Named stop watches: where the time of often repeated work goes, by label.
#pragma once

#include "platform/base/Object.h"
#include "platform/base/Ptr.h"
#include "platform/host/ProcessLife.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The time spent under one label.
struct CUTROOM_API TimedTaskRecord {
    std::string label;
    std::uint64_t runs = 0;
    double total = 0;   // seconds
    double longest = 0; // seconds
};

// One stop watch. Started again before it was stopped it nests: the inner time counts for both
// labels. One thread at a time.
class CUTROOM_API TimedTask final : public Kv::InternalRefCount {
public:
    ~TimedTask() override;

    const std::string& name() const noexcept { return name_; }
    // Begins a run under `label`. Costs one comparison when timing is switched off.
    void start(std::string_view label) {
        if (enabled_)
            begin(label);
    }
    // Ends the run begun last; nothing when none is.
    void stop() noexcept {
        if (enabled_)
            finish();
    }
    // Tells whether timing is on: ask before making a costly label.
    bool enabled() const noexcept { return enabled_; }
    // One record per label, sorted by label. At most 1000 labels are kept, the others count under
    // "(others)".
    std::vector<TimedTaskRecord> records() const;

    // Runs a task for its own lifetime.
    class Run {
    public:
        Run(TimedTask& task, std::string_view label) : task_(task) { task_.start(label); }
        ~Run() { task_.stop(); }
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;

    private:
        TimedTask& task_;
    };

private:
    friend class TimedTaskManager;
    TimedTask(std::string name, bool enabled);
    void begin(std::string_view label);
    void finish() noexcept;

    const std::string name_;
    const bool enabled_;
    struct State;
    std::unique_ptr<State> state_;
};

// All stop watches of this life. Any thread.
class CUTROOM_API TimedTaskManager {
public:
    // The task called `name`, made at the first call in this life. The configuration value
    // "timed_tasks" (default 1) set to 0 switches tasks off that are made afterwards.
    static Kv::Ptr<TimedTask> createTimedTask(std::string_view name);
    // All tasks of this life, in the order of their making.
    static std::vector<Kv::Ptr<TimedTask>> tasks();

private:
    friend class cutroom::ProcessSingleton<TimedTaskManager>;
    TimedTaskManager();
    ~TimedTaskManager();

    struct State;
    std::unique_ptr<State> state_;
};
