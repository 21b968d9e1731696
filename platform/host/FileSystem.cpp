#include "platform/host/FileSystem.h"

#include <atomic>

namespace cutroom {

namespace {
std::atomic<iFileSystem*> installed{nullptr};
}

iFileSystem::~iFileSystem() = default;

iFileSystem* installFileSystem(iFileSystem* system) noexcept { return installed.exchange(system); }

iFileSystem* installedFileSystem() noexcept { return installed.load(std::memory_order_acquire); }

} // namespace cutroom
