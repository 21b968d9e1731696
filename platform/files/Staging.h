// The steps that single writes and group commits are made of. Internal to this folder.
#pragma once

#include "platform/files/Files.h"

#include <string>
#include <string_view>
#include <utility>

namespace cutroom::staging {

enum class Flush { now, later };

// Adds the file to a failure that does not name one.
Status named(Status status, const std::string& path);

// Writes `content` to a new temporary file beside `target` and gives its path. On failure nothing
// stays.
Result<std::string> writeTemporary(iFileSystem& files, const std::string& target,
                                   std::string_view content, Flush flush);
// Gives the present content of `target` a second, temporary name; the empty text when there is no
// such file.
Result<std::string> linkOld(iFileSystem& files, const std::string& target);
// Renames the second name of `target`'s content before to "<name>.bak"; done already is fine.
Status keepAsBackup(iFileSystem& files, const std::string& target, const std::string& old);
// Flushes a folder's entries.
Status flushFolder(iFileSystem& files, const std::string& folder);
// Removes a temporary file after a failure that is being reported. That it stays, should this fail
// too, loses nothing: the next recovery removes it.
void discard(iFileSystem& files, const std::string& path);

// A temporary file that goes with this object unless it is kept, so that none stays when memory
// runs out. An empty path stands for none.
class Temporary {
public:
    Temporary(iFileSystem& files, std::string path) noexcept
        : files_(files), path_(std::move(path)) {}
    ~Temporary();
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    const std::string& path() const noexcept { return path_; }
    std::string keep() noexcept { return std::exchange(path_, std::string()); }

private:
    iFileSystem& files_;
    std::string path_;
};

} // namespace cutroom::staging
