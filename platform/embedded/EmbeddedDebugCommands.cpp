#include "platform/embedded/EmbeddedDebugCommands.h"

#include <limits>

namespace cutroom {

EmbeddedDebugCommands::EmbeddedDebugCommands() : table_(std::make_shared<Table>()) {}

Kv::Ptr<Guard> EmbeddedDebugCommands::add(const LightweightString<char>& name,
                                          std::function<void()> command) {
    const Table::key_type key(name, ++last_);
    table_->emplace(key, std::move(command));
    return Kv::makePtr<Kv::ActionGuard>([key, watched = std::weak_ptr<Table>(table_)] {
        if (const std::shared_ptr<Table> table = watched.lock())
            table->erase(key);
    });
}

// Runs a copy: a command may drop its own registration.
bool EmbeddedDebugCommands::run(const LightweightString<char>& name) {
    auto after = table_->upper_bound({name, std::numeric_limits<std::uint64_t>::max()});
    if (after == table_->begin() || (--after)->first.first != name)
        return false;
    const std::function<void()> command = after->second;
    command();
    return true;
}

LightweightVector<LightweightString<char>> EmbeddedDebugCommands::names() const {
    LightweightVector<LightweightString<char>> all;
    for (const auto& [key, command] : *table_) {
        if (all.empty() || all.back() != key.first)
            all.push_back(key.first);
    }
    return all;
}

} // namespace cutroom
