// `MediaStatus`: on which drive a piece of media lies, and whether it is there.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/Locks.h"
#include "platform/host/ProcessLife.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

// The drive that a media location names, worked out from its text alone so that it is the same on
// every machine. A value.
class CUTROOM_API DriveID {
public:
    // The empty drive; its text form is "0".
    DriveID() = default;
    // "scheme://host" of a URL of another machine, "X:" of a drive letter, the mount point of
    // "/Volumes/<name>", "/mnt/<name>", "/media/<user>/<name>" and "/run/media/<user>/<name>", "/"
    // of any other absolute path (file URLs included); the empty drive for a relative path.
    static DriveID of(std::string_view location);
    // Reads what `asString` writes.
    static DriveID fromString(std::string_view text);

    bool empty() const noexcept { return text_.empty(); }
    std::string asString() const { return text_.empty() ? "0" : text_; }
    friend bool operator==(const DriveID&, const DriveID&) = default;

private:
    std::string text_;
};

// Remembers which media files are there, so that a search asks the file system once per file.
// Relative paths are relative to the project's folder. Any thread; the lock is not held while the
// file system is asked.
class CUTROOM_API MediaStatus {
public:
    enum class State {
        unknown, // a location that is no file of this machine, or an empty one
        present,
        absent,
    };

    static MediaStatus& instance();

    // The state of a path or file URL, asked for once until `forget`.
    State get(const std::string& location);
    // Drops what is remembered about one location, or about all.
    void forget(const std::string& location);
    void forgetAll();
    // The number of locations remembered.
    std::size_t size() const;

private:
    friend class cutroom::ProcessSingleton<MediaStatus>;
    MediaStatus() = default;

    mutable CriticalSection lock_{LockRank::leaf};
    std::unordered_map<std::string, State> states_ CUTROOM_GUARDED_BY(lock_);
};

namespace cutroom {

// The local path that a location names: a path as it is, a file URL (RFC 8089) decoded; empty for
// any other URL, for an ill-formed escape and for text that holds a null character.
CUTROOM_API std::string localPathOf(std::string_view location);

} // namespace cutroom
