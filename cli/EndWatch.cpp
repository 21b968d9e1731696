#include "cli/EndWatch.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace cutroom::cli {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
constexpr int kEndsAtOnce = 3; // signals

static_assert(std::atomic<int>::is_always_lock_free, "set by a signal handler");
std::atomic<int> lastSignal = 0;
std::atomic<int> count = 0;
std::atomic<int> wake = -1; // can be read from the first signal on
std::array<struct sigaction, kSignals.size()> before{};

void take(int signal) {
    const int error = errno;
    lastSignal = signal;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t told = ::write(wake, &one, sizeof one); // there is room
    if (++count >= kEndsAtOnce) {
        ::signal(signal, SIG_DFL);
        ::raise(signal);
    }
    errno = error;
}

} // namespace

EndWatch::EndWatch() {
    wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    struct sigaction action {};
    action.sa_handler = &take;
    action.sa_flags = SA_RESTART; // or it would cut short what is being written
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        ::sigaction(kSignals[i], nullptr, &before[i]);
        if (before[i].sa_handler != SIG_IGN) // a background job, or nohup: it stays so
            ::sigaction(kSignals[i], &action, nullptr);
    }
}

EndWatch::~EndWatch() {
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        ::sigaction(kSignals[i], &before[i], nullptr);
    if (ready())
        ::close(wake.exchange(-1));
}

bool EndWatch::ready() noexcept { return wake >= 0; }

int EndWatch::signal() noexcept { return lastSignal; }

bool EndWatch::awaits(int input) noexcept {
    std::array<pollfd, 2> both{{{input, POLLIN, 0}, {wake, POLLIN, 0}}};
    while (signal() == 0 && ::poll(both.data(), both.size(), -1) < 0 && errno == EINTR)
        ;
    return signal() == 0;
}

} // namespace cutroom::cli
