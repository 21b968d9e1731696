// The file system as the library sees it. Every byte that reaches or leaves the disk (save the
// project database's own) goes through the installed one, so a host can redirect it and a test can
// let any operation fail or record it. Without one, the operating system's serves
// (`fileSystem()` in platform/files/Files.h).
#pragma once

#include "platform/base/Status.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cutroom {

enum class OpenMode {
    read,      // an existing file, for reading
    createNew, // a file that must not exist, for writing
    readWrite, // a file that is made when it is not there, for both; content kept
};

struct FileInfo {
    bool folder = false;
    std::uint64_t size = 0;         // bytes; 0 for a folder
    std::int64_t modifiedNanos = 0; // since 1970-01-01T00:00:00Z
    std::uint64_t identity = 0;     // equal for two names of one file
};

// Paths are UTF-8. Every failure names the path: `notFound` for what is not there, `locked` for a
// lock held by another, `inputOutput` for the rest. No operation is repeated on failure. Any
// thread; one handle belongs to one thread at a time.
class CUTROOM_API iFileSystem {
public:
    using Handle = int;

    virtual ~iFileSystem();

    // The handle is not inherited by programs that are started.
    virtual Result<Handle> open(const std::string& path, OpenMode mode) = 0;
    // Reads on from where the handle stands; 0 bytes at the end, never more than `size`.
    virtual Result<std::size_t> read(Handle file, char* buffer, std::size_t size) = 0;
    // Writes on from where the handle stands; may write fewer bytes than asked, at least one.
    virtual Result<std::size_t> write(Handle file, const char* data, std::size_t size) = 0;
    // Cuts the file to `size` bytes and stands at its end.
    virtual Status truncate(Handle file, std::uint64_t size) = 0;
    // Returns when the file's content has reached the disk. After a failure the content is in
    // doubt, and a second call that succeeds proves nothing.
    virtual Status flush(Handle file) = 0;
    // Takes the exclusive lock of the open file without waiting; `locked` when another holds it.
    // It ends with the handle or the process.
    virtual Status lock(Handle file) = 0;
    // The handle is closed even when this fails.
    virtual Status close(Handle file) = 0;

    // Opens a folder, for `flush` (its entries) and `flushAll`. Closed with `close`.
    virtual Result<Handle> openFolder(const std::string& path) = 0;
    // Returns when everything written to the file system that holds the open folder has reached
    // the disk; reports what failed to since the folder was opened.
    virtual Status flushAll(Handle folder) = 0;

    virtual Result<FileInfo> stat(const std::string& path) = 0;
    // Of the open file or folder, whatever has taken its name since.
    virtual Result<FileInfo> stat(Handle file) = 0;
    // Replaces `to` in one step when it is there.
    virtual Status rename(const std::string& from, const std::string& to) = 0;
    // Removes a file or an empty folder.
    virtual Status remove(const std::string& path) = 0;
    // Gives the file a second name; `to` must not exist. Where the file system knows no second
    // names the file is copied and flushed.
    virtual Status link(const std::string& from, const std::string& to) = 0;
    // Makes one folder; one that is there already is fine.
    virtual Status makeFolder(const std::string& path) = 0;
    // Names (not paths) of the entries of a folder, sorted by bytes, without "." and "..".
    virtual Result<std::vector<std::string>> list(const std::string& path) = 0;
};

// Installs `system` (null: the operating system's); gives the one before. The caller keeps it
// alive. Only while no file operation runs.
CUTROOM_API iFileSystem* installFileSystem(iFileSystem* system) noexcept;
// The installed one, or null.
CUTROOM_API iFileSystem* installedFileSystem() noexcept;

} // namespace cutroom
