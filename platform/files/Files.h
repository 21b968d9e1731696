// Whole files, read and written so that after any crash a file is the old one or the new one.
//
// A write goes to a temporary file in the same folder, is flushed to the disk, and is renamed over
// the old file; then the folder is flushed. The old content stays as "<name>.bak". All operations
// go through the installed file system and may run on any thread; a caller that writes one path
// from two threads must order the writes.
#pragma once

#include "platform/base/Strings.h"
#include "platform/host/FileSystem.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// The installed file system, or the operating system's.
CUTROOM_API iFileSystem& fileSystem() noexcept;
// The operating system's, whatever is installed: for file systems that wrap it.
CUTROOM_API iFileSystem& systemFiles() noexcept;

// The most bytes that are read from one file when the caller names no smaller limit.
inline constexpr std::uint64_t kMaxFileBytes = std::uint64_t{1} << 31;

// Reads a whole file. `damaged` when it is larger than `maxBytes`, `notFound` when it is not there.
CUTROOM_API Result<std::string> readFile(const std::string& path,
                                         std::uint64_t maxBytes = kMaxFileBytes);

// Whether the content that a write replaces is kept as "<name>.bak" (one generation).
enum class Backup { keep, none };
// Replaces the file's content in one step, crash-safe, or makes the file. On failure the file holds
// its old content and no temporary file stays; only when flushing the folder fails the new content
// is there without being sure to survive a crash.
CUTROOM_API Status writeFile(const std::string& path, std::string_view content,
                             Backup backup = Backup::keep);
// Writes a file that the user named: in one step like writeFile and without a backup, but through a
// symbolic link to what it leads to, and into a device or pipe without replacing it.
CUTROOM_API Status writeOutput(const std::string& path, std::string_view content);
// Removes the file and flushes its folder. A file that is not there is fine.
CUTROOM_API Status removeFile(const std::string& path);
// Renames a file (over one that is there) and flushes both folders.
CUTROOM_API Status moveFile(const std::string& from, const std::string& to);
// Copies a file crash-safely; the target is replaced in one step.
CUTROOM_API Status copyFile(const std::string& from, const std::string& to);
// Moves a damaged file to "<name>.damaged" (".damaged.2" and so on when taken) in its folder, and
// gives the new path. For writing commands, before they make a fresh one.
CUTROOM_API Result<std::string> moveAside(const std::string& path);

// Makes the folder and those above it, and flushes the entries made.
CUTROOM_API Status makeFolders(const std::string& path);
// Names of the files (not folders) in `folder` that end in `suffix`, sorted by bytes; temporary
// files, names that are not UTF-8 and, with a suffix, hidden ones ("._a.edit", which some systems
// put beside a copy) are left out. A folder that is not there has none.
CUTROOM_API Result<std::vector<std::string>> listFiles(const std::string& folder,
                                                       std::string_view suffix = {});
// Tells whether something is there. What cannot be asked counts as not there.
CUTROOM_API bool fileExists(const std::string& path) noexcept;

// True for the names that interrupted writes leave behind ("….1a2b-3.tmp~", "….1a2b-4.old~").
CUTROOM_API bool isTemporaryName(std::string_view name) noexcept;
// Removes what interrupted single writes left in `folder`. Only for the process that may write
// there, while none of its writes runs; gives the number of files removed.
CUTROOM_API Result<int> removeTemporaries(const std::string& folder);

// Paths. "/" separates; an absolute `name` stays as it is.
CUTROOM_API std::string joinPath(std::string_view folder, std::string_view name);
// All before the last "/" ("." when there is none, "/" for the root).
CUTROOM_API std::string folderOf(std::string_view path);
CUTROOM_API std::string nameOf(std::string_view path);
// The last extension without its point; empty when there is none.
CUTROOM_API std::string extensionOf(std::string_view path);
// UTF-8 form of a wide path; a failure when it is not well-formed, is empty or holds a null.
CUTROOM_API Result<std::string> narrowPath(const LightweightString<wchar_t>& path);
// A failure when `path` cannot be used as one: not UTF-8, empty, or with a null inside.
CUTROOM_API Status checkPath(const std::string& path);

} // namespace cutroom
