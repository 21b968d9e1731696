#include "platform/messaging/ValServerBase.h"

ValServerBase::~ValServerBase() = default;

namespace {
std::atomic<std::uint64_t> changes{0};
} // namespace

void LastValServer::noteChange() noexcept {
    last_.store(changes.fetch_add(1, std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}
