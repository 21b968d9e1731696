#include "platform/base/IdSource.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <sys/random.h>
#include <unistd.h>

namespace cutroom {

iIdSource::~iIdSource() = default;

namespace {

std::uint64_t clockTicks() noexcept {
    return static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
}

// One to one, so that different numbers stay different (the finaliser of SplitMix64).
std::uint64_t mixed(std::uint64_t value) noexcept {
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ull;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBull;
    return value ^ (value >> 31);
}

std::uint64_t entropy() noexcept {
    std::uint64_t bits = 0;
    ssize_t got = 0;
    do
        got = ::getrandom(&bits, sizeof bits, 0);
    while (got < 0 && errno == EINTR);
    // A kernel without the call leaves the clock and the process.
    return bits ^ mixed(clockTicks()) ^ mixed(static_cast<std::uint64_t>(::getpid()) << 32);
}

// A counter from a random start, mixed: no number comes twice within a process, and processes
// start far apart.
class SystemIdSource final : public iIdSource {
public:
    std::uint64_t nextId() override {
        const std::lock_guard lock(mutex_);
        if (const pid_t process = ::getpid(); process != process_) {
            // The first number, or the first after a fork.
            process_ = process;
            counter_ = entropy();
        }
        return mixed(counter_++);
    }
    std::uint32_t secondsNow() override {
        using namespace std::chrono;
        return static_cast<std::uint32_t>(
            duration_cast<seconds>(system_clock::now().time_since_epoch()).count());
    }

private:
    std::mutex mutex_;
    std::uint64_t counter_ = 0; // guarded by mutex_
    pid_t process_ = 0;         // guarded by mutex_
};

std::atomic<iIdSource*> installed{nullptr};

} // namespace

iIdSource* installIdSource(iIdSource* source) noexcept { return installed.exchange(source); }

iIdSource& idSource() noexcept {
    static SystemIdSource& system = *new SystemIdSource;
    iIdSource* const source = installed.load();
    return source ? *source : system;
}

} // namespace cutroom
