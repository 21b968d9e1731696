#include "cli/Progress.h"

#include "cli/Command.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <unistd.h>

namespace cutroom::cli {

namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr int kBarWidth = 30;
constexpr std::size_t kNameWidth = 36; // with the bar fewer than 80 columns

// What a line of a terminal has room for: the end of a long name, without control characters.
std::string named(const std::string& what) {
    const std::wstring name = toWide(oneLine(what));
    if (name.size() <= kNameWidth)
        return toUtf8(name);
    return toUtf8(L"…" + name.substr(name.size() - kNameWidth + 1));
}

} // namespace

Progress::Progress(const std::string& what)
    : what_(named(what)), wanted_(::isatty(STDERR_FILENO) != 0) {}

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
