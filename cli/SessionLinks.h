// What a session keeps of synchronisers: each by name, one of them the current one.
#pragma once

#include "sync/MulticamSynchroniser.h"

#include <map>
#include <memory>
#include <string>

namespace cutroom::cli {

// User-interface thread. Goes before the viewers that are linked.
class SessionLinks {
public:
    // The one that verbs act on; refuses when there is none, or (`multicam`) it is a plain one.
    VobSynchroniser& current() const;
    MulticamSynchroniser& multicam() const;
    const std::string& currentName() const noexcept { return current_; }
    // Null when there is none of that name.
    VobSynchroniser* find(const std::string& name) const;
    // Refuses a name that is unknown.
    void use(const std::string& name);
    // In place of one of that name; becomes the current one.
    VobSynchroniser& add(const std::string& name, std::unique_ptr<VobSynchroniser> synchroniser);
    // Ends the current one.
    void endCurrent();
    void clear();
    const std::map<std::string, std::unique_ptr<VobSynchroniser>>& all() const noexcept {
        return all_;
    }

private:
    std::map<std::string, std::unique_ptr<VobSynchroniser>> all_;
    std::string current_;
};

} // namespace cutroom::cli
