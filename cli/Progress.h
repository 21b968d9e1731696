// A progress bar on standard error, for what takes more than a second, when that is a terminal.
#pragma once

#include <chrono>
#include <string>

namespace cutroom::cli {

// Draws over its own line; leaves nothing behind when it goes.
class Progress {
public:
    // `what` names the work; of a long name the end is shown.
    explicit Progress(const std::string& what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // `share` of the work is done, 0 to 1.
    void show(double share);

private:
    using Clock = std::chrono::steady_clock;

    const std::string what_;
    const bool wanted_;
    const Clock::time_point start_ = Clock::now();
    int shown_ = -1; // per cent on the screen; -1: nothing
};

} // namespace cutroom::cli
