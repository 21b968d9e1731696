#include "platform/prefs/ShutdownState.h"

#include "platform/host/ProcessLife.h"

#include <atomic>

namespace {

struct Exiting {
    std::atomic<bool> flag{false};
};

using State = cutroom::ProcessSingleton<Exiting>;

} // namespace

bool ShutdownState::isExiting() noexcept {
    const Exiting* state = State::find();
    return state && state->flag.load(std::memory_order_acquire);
}

void ShutdownState::setExiting() { State::get().flag.store(true, std::memory_order_release); }
