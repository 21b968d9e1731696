// Debug commands: functions that a developer can run by name in a live program.
#pragma once

#include "platform/base/Guard.h"
#include "platform/base/Strings.h"

#include <functional>

namespace cutroom {

// User-interface thread only.
class CUTROOM_API iDebugCommands {
public:
    virtual ~iDebugCommands();
    // Registers `command` under `name` (compared exactly) until the guard is dropped, which may
    // outlive the service. Of two with one name the later serves while it is registered.
    virtual Kv::Ptr<Guard> add(const LightweightString<char>& name,
                               std::function<void()> command) = 0;
    // Runs a command; false when there is none of that name.
    virtual bool run(const LightweightString<char>& name) = 0;
    // The names, sorted, each once.
    virtual LightweightVector<LightweightString<char>> names() const = 0;
};

// Registers with the installed service. Without a host the guard is empty.
CUTROOM_API Kv::Ptr<Guard> addDebugCommand(const LightweightString<char>& name,
                                           std::function<void()> command);

} // namespace cutroom
