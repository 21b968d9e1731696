// Many files changed at once: all of them or none, with few flushes.
//
// Every content is staged in a temporary file beside its target; one flush covers them all. A
// manifest, written crash-safely in the group's root folder, decides: once it is there, the group
// is committed, and what a crash leaves undone is done by `recover` at the next open. Without it
// the staged files are litter, which `recover` removes.
//
//     stage ──> flush all ──> manifest (decided) ──> rename each ──> flush folders ──> manifest
//     gone
#pragma once

#include "platform/base/Status.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace cutroom {

// One group of changes below one root folder. Used by one thread, by the process that holds the
// folder's lock; groups of several threads commit one after the other.
class CUTROOM_API GroupCommit {
public:
    // What `recover` found.
    struct Recovery {
        int completed = 0;   // files of a decided group that were put in place
        int removed = 0;     // staged files of undecided groups and single writes that were removed
        std::string damaged; // where a manifest that could not be read was moved, or empty
    };

    // A group below the folder `root`, which must exist when the first file is staged.
    explicit GroupCommit(std::string root);
    // Removes what was staged and not committed.
    ~GroupCommit();
    GroupCommit(const GroupCommit&) = delete;
    GroupCommit& operator=(const GroupCommit&) = delete;

    // Stages new content for `path`, relative to the root and inside it; its folder must exist. A
    // later content for the same path replaces the earlier one.
    Status write(const std::string& path, std::string_view content);
    // Stages the removal of a file; one that is not there is fine.
    Status remove(const std::string& path);
    // Number of paths staged.
    std::size_t size() const noexcept;

    // Puts everything in place, keeping replaced and removed contents as "<name>.bak". A failure
    // before the manifest stands leaves every file as it was and nothing staged. A later one says
    // so in its message: the group is decided, and the next `commit` or `recover` in this root
    // completes it first. Afterwards the group is empty and can be filled again.
    Status commit();

    // Completes a decided group (leaving out what was written anew since) and removes litter in
    // `root` and the folders below it (depth 8). Only for the process that may write there.
    static Result<Recovery> recover(const std::string& root);
    // Tells whether a decided group waits to be completed, for readers that touch nothing.
    static bool pending(const std::string& root);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace cutroom
