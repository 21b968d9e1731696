#include "cli/Progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <unistd.h>

namespace cutroom::cli {

namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr int kBarWidth = 30;

} // namespace

Progress::Progress(std::string what)
    : what_(std::move(what)), wanted_(::isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (shown_ >= 0)
        std::fputs("\r\x1b[K", stderr);
}

void Progress::show(double share) {
    if (!wanted_ || !(share >= 0) || Clock::now() - start_ < kPatience)
        return;
    const int percent = static_cast<int>(std::lround(std::min(share, 1.0) * 100));
    if (percent == shown_)
        return;
    shown_ = percent;
    const int filled = percent * kBarWidth / 100;
    std::fprintf(stderr, "\r%s [%s%s] %3d %%", what_.c_str(),
                 std::string(static_cast<std::size_t>(filled), '#').c_str(),
                 std::string(static_cast<std::size_t>(kBarWidth - filled), '.').c_str(), percent);
    std::fflush(stderr);
}

} // namespace cutroom::cli
