#include "platform/host/DebugCommands.h"

#include "platform/host/Host.h"

#include <utility>

namespace cutroom {

iDebugCommands::~iDebugCommands() = default;

Kv::Ptr<Guard> addDebugCommand(const LightweightString<char>& name, std::function<void()> command) {
    return Host::debugCommands().add(name, std::move(command));
}

} // namespace cutroom
