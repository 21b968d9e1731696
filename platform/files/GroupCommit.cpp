#include "platform/files/GroupCommit.h"

#include "platform/base/Locks.h"
#include "platform/base/Log.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/CommitManifest.h"
#include "platform/files/Staging.h"

#include <filesystem>
#include <new>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <vector>

namespace cutroom {

using namespace staging;

namespace {

// So many contents are flushed one by one; flushing a whole file system waits for what other
// programs wrote too, and pays only for more.
constexpr std::size_t kFlushedEach = 8;
constexpr int kRecoverDepth = 8;

std::string manifestPath(const std::string& root) { return joinPath(root, kManifestName); }

Status removeManifest(iFileSystem& files, const std::string& root) {
    const Status removed = files.remove(manifestPath(root));
    return removed.code() == StatusCode::notFound ? Status() : named(removed, manifestPath(root));
}

// Ends the group whose manifest stands in the root, if there is one. The manifest's own removal
// need not be flushed: without staged files it stands for nothing.
Status completeDecided(iFileSystem& files, const std::string& root, GroupCommit::Recovery& found) {
    const std::string path = manifestPath(root);
    const Result<FileInfo> there = files.stat(path);
    if (!there)
        return there.status().code() == StatusCode::notFound ? Status() : there.status();
    Result<std::vector<Change>> changes = readManifest(path);
    if (changes.status().code() == StatusCode::damaged) {
        Result<std::string> aside = moveAside(path);
        if (aside)
            found.damaged = *aside;
        return aside.status();
    }
    if (!changes)
        return changes.status();
    const Result<bool> decided = stands(files, root, *changes);
    if (!decided)
        return decided.status();
    if (*decided) {
        const Result<int> done = apply(files, root, *changes);
        if (!done)
            return done.status();
        found.completed = *done;
    } else {
        discardAll(files, root, *changes);
    }
    const Status flushed = flushFolders(files, root, *changes);
    return flushed.ok() ? removeManifest(files, root) : flushed;
}

// What a link leads to is somebody else's, and so is what may not be looked into ("lost+found").
Status removeLitter(iFileSystem& files, const std::string& folder, int depth, int& removed) {
    const Result<std::vector<std::string>> names = files.list(folder);
    if (!names)
        return depth == kRecoverDepth ? names.status() : Status();
    const Result<int> here = removeTemporaries(folder);
    if (!here)
        return here.status();
    removed += *here;
    if (depth == 0)
        return {};
    for (const std::string& name : *names) {
        const std::string path = joinPath(folder, name);
        const Result<FileInfo> info = files.stat(path);
        std::error_code unknown;
        if (!info || !info->folder || std::filesystem::is_symlink(path, unknown))
            continue;
        if (Status below = removeLitter(files, path, depth - 1, removed); !below)
            return below;
    }
    return {};
}

} // namespace

struct GroupCommit::State {
    std::string root;
    std::optional<iFileSystem::Handle> folder; // open since before the first write
    std::vector<Change> changes;
    std::unordered_map<std::string, std::size_t> places; // of a path in changes
    std::size_t written = 0;                             // contents staged; the first are flushed

    Status openRoot(iFileSystem& files) {
        if (folder)
            return {};
        Result<iFileSystem::Handle> open = files.openFolder(root);
        if (open)
            folder = *open;
        return open.status();
    }

    void put(Change change) {
        if (changes.size() == changes.capacity()) // what is noted in `places` must find room
            changes.reserve(2 * changes.size() + 1);
        const auto [at, added] = places.try_emplace(change.path, changes.size());
        if (added) {
            changes.push_back(std::move(change));
            return;
        }
        Change& earlier = changes[at->second];
        if (!earlier.temporary.empty())
            discard(fileSystem(), joinPath(root, earlier.temporary));
        earlier = std::move(change);
    }

    void clear() {
        if (folder)
            (void)fileSystem().close(*folder); // nothing was written through it
        folder.reset();
        changes.clear();
        places.clear();
        written = 0;
    }

    // A name without the root before it.
    std::string relative(const std::string& path) const {
        return path.substr(root.size() + (root.ends_with('/') ? 0 : 1));
    }

    Status linkOlds(iFileSystem& files) {
        for (Change& change : changes) {
            Result<std::string> old = linkOld(files, joinPath(root, change.path));
            if (!old)
                return old.status();
            Temporary second(files, std::move(*old));
            change.old = second.path().empty() ? "" : relative(second.path());
            second.keep();
        }
        // Nothing to be removed: nothing to do.
        std::erase_if(changes, [](const Change& change) {
            return change.temporary.empty() && change.old.empty();
        });
        return {};
    }

    // All up to the decision.
    Status decide(iFileSystem& files) {
        if (written > kFlushedEach)
            if (Status flushed = files.flushAll(*folder); !flushed)
                return named(flushed, root);
        if (Status linked = linkOlds(files); !linked)
            return linked;
        if (changes.empty())
            return {};
        if (Status flushed = flushFolders(files, root, changes); !flushed)
            return flushed;
        return writeFile(manifestPath(root), manifestBytes(changes), Backup::none);
    }

    Status finish(iFileSystem& files) {
        const Result<int> done = apply(files, root, changes);
        if (!done)
            return done.status();
        const Status flushed = flushFolders(files, root, changes);
        return flushed.ok() ? removeManifest(files, root) : flushed;
    }

    // A decided group is not taken back: out of memory it is tried again, and else left to the next
    // commit with all that it staged.
    Status finishSurely(iFileSystem& files) {
        try {
            return finish(files);
        } catch (const std::bad_alloc&) {
        }
        try {
            return finish(files);
        } catch (const std::bad_alloc&) {
            clear();
            throw;
        }
    }
};

GroupCommit::GroupCommit(std::string root) : state_(std::make_unique<State>()) {
    state_->root = std::move(root);
}

GroupCommit::~GroupCommit() {
    try {
        discardAll(fileSystem(), state_->root, state_->changes);
    } catch (const std::bad_alloc&) { // it stays until the next recovery
    }
    state_->clear();
}

Status GroupCommit::write(const std::string& path, std::string_view content) {
    if (!isInside(path))
        return {StatusCode::wrongUsage, path, "is no file below the folder that is saved"};
    iFileSystem& files = fileSystem();
    if (Status open = state_->openRoot(files); !open)
        return open;
    const Flush flush = state_->written < kFlushedEach ? Flush::now : Flush::later;
    Result<std::string> written =
        writeTemporary(files, joinPath(state_->root, path), content, flush);
    if (!written)
        return written.status();
    Temporary temporary(files, std::move(*written));
    ++state_->written;
    state_->put({path, state_->relative(temporary.path()), {}, content.size(), checksum(content)});
    temporary.keep();
    return {};
}

Status GroupCommit::remove(const std::string& path) {
    if (!isInside(path))
        return {StatusCode::wrongUsage, path, "is no file below the folder that is saved"};
    state_->put({path, {}, {}, 0, 0});
    return {};
}

std::size_t GroupCommit::size() const noexcept { return state_->changes.size(); }

Status GroupCommit::commit() {
    if (state_->changes.empty())
        return {};
    static CriticalSection oneAtATime;
    CriticalSection::Lock lock(oneAtATime);
    iFileSystem& files = fileSystem();
    Recovery earlier;
    Status status = completeDecided(files, state_->root, earlier);
    if (!earlier.damaged.empty())
        LogBoth("%s: damaged, moved aside\n", earlier.damaged.c_str());
    const bool free = status.ok();
    if (free)
        status = state_->decide(files);
    if (!status) {
        // A manifest of this group that may have come to stand stands for nothing without what it
        // names; one of an earlier group stays.
        discardAll(files, state_->root, state_->changes);
        if (free)
            (void)removeManifest(files, state_->root);
        state_->clear();
        return status;
    }
    status = state_->finishSurely(files);
    state_->clear();
    if (status.ok())
        return {};
    return {status.code(), status.file(),
            "saved, but not yet in place (the next save completes it): " + status.message()};
}

Result<GroupCommit::Recovery> GroupCommit::recover(const std::string& root) {
    iFileSystem& files = fileSystem();
    Recovery found;
    if (Status completed = completeDecided(files, root, found); !completed)
        return completed;
    if (Status cleaned = removeLitter(files, root, kRecoverDepth, found.removed); !cleaned)
        return cleaned;
    return found;
}

bool GroupCommit::pending(const std::string& root) { return fileExists(manifestPath(root)); }

} // namespace cutroom
