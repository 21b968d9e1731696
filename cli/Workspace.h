// The project that a command works on, opened on the shipped platform.
#pragma once

#include "platform/base/Status.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/embedded/EmbeddedProject.h"

#include <string>

namespace cutroom::cli {

// What every command is given.
struct Options {
    std::string project; // the folder named with -p; empty: found from the current folder
    bool json = false;
    bool repeatable = false; // fixed ids and a clock that only the session moves
};

// The folder of the project to use: the one named, else the nearest folder from the current one
// upward that holds a project.json, else "./cutroom.project".
std::string projectFolder(const Options& options);

// One open project. Made by each command that needs one; closes when it goes.
class Workspace {
public:
    enum class Use {
        read,          // touches nothing; works beside a writing process
        write,         // the project must exist
        writeOrCreate, // makes it when it is not there
    };

    explicit Workspace(const Options& options);

    Status open(Use use);
    // Writes what is due and closes.
    Status close() { return project_.close(); }
    EmbeddedHost& host() noexcept { return host_; }
    const std::string& folder() const noexcept { return folder_; }

private:
    std::string folder_;
    EmbeddedHost host_;
    EmbeddedProject project_;
};

} // namespace cutroom::cli
