// Saving what has changed while a loop runs, so that a crash costs little.
#pragma once

#include "platform/base/Guard.h"
#include "platform/host/EventLoop.h"

namespace cutroom {

// Writes every dirty edit, and the preferences, at the latest `kSeconds` after a change or after
// `kChanges` changes. A save that fails is logged and tried again after the same time. Lives as
// long as the project is open for writing; user-interface thread only.
class CUTROOM_API Autosave {
public:
    static constexpr double kSeconds = 60;
    static constexpr int kChanges = 25;

    // `loop` outlives it.
    explicit Autosave(iEventLoop& loop);
    ~Autosave();
    Autosave(const Autosave&) = delete;
    Autosave& operator=(const Autosave&) = delete;

private:
    void noteChange();
    void save();

    iEventLoop& loop_;
    int changes_ = 0; // since the last save
    Kv::Ptr<Guard> registration_;
    Kv::Ptr<Guard> timer_; // runs while changes wait
};

} // namespace cutroom
