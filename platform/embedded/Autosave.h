// Saving what has changed while a loop runs, so that a crash costs little.
#pragma once

#include "platform/base/Guard.h"
#include "platform/host/EventLoop.h"
#include "platform/project/Savers.h"

namespace cutroom {

// Writes every dirty edit, whatever registered with `Savers` (bins, documents, groups), and the
// preferences, at the latest `kSeconds` after a change or after `kChanges` changes. What fails is
// logged, does not keep the rest from being written, and is tried again after the same time. Lives
// as long as the project is open for writing; user-interface thread only.
class CUTROOM_API Autosave {
public:
    static constexpr double kSeconds = 60;
    static constexpr int kChanges = Savers::kManyChanges;

    // `loop` outlives it.
    explicit Autosave(iEventLoop& loop);
    ~Autosave();
    Autosave(const Autosave&) = delete;
    Autosave& operator=(const Autosave&) = delete;

private:
    void noteChange();
    void save();

    iEventLoop& loop_;
    Kv::Ptr<Guard> edits_;
    Kv::Ptr<Guard> changes_;
    Kv::Ptr<Guard> timer_; // runs while changes wait
};

} // namespace cutroom
