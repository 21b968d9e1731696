#include "platform/messaging/ValServerBase.h"

ValServerBase::~ValServerBase() = default;

namespace {
std::atomic<std::uint64_t> changes{0};
} // namespace

void LastValServer::noteChange() noexcept {
    // No locked instruction: every change of every value passes here.
    const std::uint64_t place = changes.load(std::memory_order_relaxed) + 1;
    changes.store(place, std::memory_order_relaxed);
    last_.store(place, std::memory_order_relaxed);
}
