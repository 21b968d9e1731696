// The table of debug commands.
#pragma once

#include "platform/host/DebugCommands.h"

#include <cstdint>
#include <map>
#include <memory>

namespace cutroom {

// User-interface thread only.
class CUTROOM_API EmbeddedDebugCommands final : public iDebugCommands {
public:
    EmbeddedDebugCommands();
    Kv::Ptr<Guard> add(const LightweightString<char>& name, std::function<void()> command) override;
    bool run(const LightweightString<char>& name) override;
    LightweightVector<LightweightString<char>> names() const override;

private:
    // Commands by name and order of registration. Guards watch the table, so they may outlive it.
    using Table =
        std::map<std::pair<LightweightString<char>, std::uint64_t>, std::function<void()>>;

    std::shared_ptr<Table> table_;
    std::uint64_t last_ = 0;
};

} // namespace cutroom
