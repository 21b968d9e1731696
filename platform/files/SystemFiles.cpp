// The operating system's files (POSIX.1-2017, Linux's syncfs).
#include "platform/files/Files.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <system_error>

namespace cutroom {

namespace {

Status failure(const std::string& path, const char* what) {
    const int code = errno;
    StatusCode kind = StatusCode::inputOutput;
    if (code == ENOENT || code == ENOTDIR)
        kind = StatusCode::notFound;
    return {kind, path,
            std::string("cannot ") + what + ": " + std::generic_category().message(code)};
}

// Handles do not know their paths; whoever opened one names the file.
Status handleFailure(const char* what) { return failure({}, what); }

// Repeats a call that a signal interrupted before it did anything.
template <class Call> auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

class SystemFiles final : public iFileSystem {
public:
    Result<Handle> open(const std::string& path, OpenMode mode) override {
        if (Status usable = checkPath(path); !usable)
            return usable;
        int flags = O_RDONLY;
        if (mode == OpenMode::createNew)
            flags = O_WRONLY | O_CREAT | O_EXCL;
        else if (mode == OpenMode::readWrite)
            flags = O_RDWR | O_CREAT | O_NOFOLLOW; // nobody's file but that of this name changes
        return opened(path, flags, mode == OpenMode::read ? "open" : "open for writing");
    }

    Result<std::size_t> read(Handle file, char* buffer, std::size_t size) override {
        const ssize_t done = uninterrupted([&] { return ::read(file, buffer, size); });
        if (done < 0)
            return handleFailure("read");
        return static_cast<std::size_t>(done);
    }

    Result<std::size_t> write(Handle file, const char* data, std::size_t size) override {
        const ssize_t done = uninterrupted([&] { return ::write(file, data, size); });
        if (done < 0)
            return handleFailure("write");
        return static_cast<std::size_t>(done);
    }

    Status truncate(Handle file, std::uint64_t size) override {
        const auto length = static_cast<off_t>(size);
        if (uninterrupted([&] { return ::ftruncate(file, length); }) != 0 ||
            ::lseek(file, length, SEEK_SET) < 0)
            return handleFailure("truncate");
        return {};
    }

    Status flush(Handle file) override {
        // Some shares know no flush of folders; there is nothing more to be done on them.
        const bool done = ::fsync(file) == 0 || errno == EINVAL;
        return done ? Status() : handleFailure("flush to the disk");
    }

    Status lock(Handle file) override {
        if (uninterrupted([&] { return ::flock(file, LOCK_EX | LOCK_NB); }) == 0)
            return {};
        if (errno == EWOULDBLOCK || errno == EACCES) // the second from SMB shares
            return {StatusCode::locked, {}, "is locked by another process"};
        return handleFailure("lock");
    }

    Status close(Handle file) override {
        // After EINTR the handle is gone on Linux; closing again could close another's.
        return ::close(file) == 0 || errno == EINTR ? Status() : handleFailure("close");
    }

    Result<Handle> openFolder(const std::string& path) override {
        if (Status usable = checkPath(path); !usable)
            return usable;
        return opened(path, O_RDONLY | O_DIRECTORY, "open the folder");
    }

    Status flushAll(Handle folder) override {
        return ::syncfs(folder) == 0 ? Status() : handleFailure("flush to the disk");
    }

    Result<FileInfo> stat(const std::string& path) override;
    Result<FileInfo> stat(Handle file) override;
    Status rename(const std::string& from, const std::string& to) override {
        if (Status usable = checkPath(to); !usable)
            return usable;
        return ::rename(from.c_str(), to.c_str()) == 0 ? Status() : failure(to, "rename to this");
    }
    Status remove(const std::string& path) override {
        return ::remove(path.c_str()) == 0 ? Status() : failure(path, "remove");
    }
    Status link(const std::string& from, const std::string& to) override;
    Status makeFolder(const std::string& path) override;
    Result<std::vector<std::string>> list(const std::string& path) override;

private:
    static Result<Handle> opened(const std::string& path, int flags, const char* what) {
        const int file =
            uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC, 0666); });
        if (file < 0)
            return failure(path, what);
        return file;
    }
    Status copy(const std::string& from, const std::string& to);
    Status copyInto(Handle in, Handle out, const std::string& to);
};

FileInfo infoOf(const struct stat& found) {
    FileInfo info;
    info.folder = S_ISDIR(found.st_mode);
    info.size = info.folder ? 0 : static_cast<std::uint64_t>(found.st_size);
    info.modifiedNanos = found.st_mtim.tv_sec * std::int64_t{1'000'000'000} + found.st_mtim.tv_nsec;
    info.identity =
        static_cast<std::uint64_t>(found.st_ino) ^ (static_cast<std::uint64_t>(found.st_dev) << 40);
    return info;
}

Result<FileInfo> SystemFiles::stat(const std::string& path) {
    struct stat found {};
    if (Status usable = checkPath(path); !usable)
        return usable;
    if (::stat(path.c_str(), &found) != 0)
        return failure(path, "look up");
    return infoOf(found);
}

Result<FileInfo> SystemFiles::stat(Handle file) {
    struct stat found {};
    if (::fstat(file, &found) != 0)
        return handleFailure("look up");
    return infoOf(found);
}

Status SystemFiles::link(const std::string& from, const std::string& to) {
    if (::link(from.c_str(), to.c_str()) == 0)
        return {};
    if (errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS || errno == EMLINK)
        return copy(from, to);
    return failure(from, "link");
}

Status SystemFiles::copy(const std::string& from, const std::string& to) {
    Result<Handle> in = open(from, OpenMode::read);
    if (!in)
        return in.status();
    Result<Handle> out = open(to, OpenMode::createNew);
    if (!out) {
        (void)close(*in); // only read from
        return out.status();
    }
    Status copied = copyInto(*in, *out, to);
    (void)close(*in);
    if (Status closed = close(*out); copied.ok())
        copied = closed;
    if (!copied)
        ::unlink(to.c_str());
    return copied;
}

Status SystemFiles::copyInto(Handle in, Handle out, const std::string& to) {
    std::array<char, 65536> buffer;
    for (;;) {
        Result<std::size_t> got = read(in, buffer.data(), buffer.size());
        if (!got)
            return got.status();
        if (*got == 0)
            return flush(out);
        for (std::size_t done = 0; done < *got;) {
            Result<std::size_t> put = write(out, buffer.data() + done, *got - done);
            if (!put || *put == 0)
                return put ? Status(StatusCode::inputOutput, to, "cannot write") : put.status();
            done += *put;
        }
    }
}

Status SystemFiles::makeFolder(const std::string& path) {
    if (Status usable = checkPath(path); !usable)
        return usable;
    if (::mkdir(path.c_str(), 0777) == 0)
        return {};
    if (errno == EEXIST) {
        const Result<FileInfo> there = stat(path);
        if (there && there->folder)
            return {};
        errno = EEXIST;
    }
    return failure(path, "make the folder");
}

Result<std::vector<std::string>> SystemFiles::list(const std::string& path) {
    if (Status usable = checkPath(path); !usable)
        return usable;
    const auto close = [](DIR* open) { ::closedir(open); };
    const std::unique_ptr<DIR, decltype(close)> folder(::opendir(path.c_str()), close);
    if (!folder)
        return failure(path, "list the folder");
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
        errno = 0;
    }
    if (errno)
        return failure(path, "list the folder");
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

iFileSystem& systemFiles() noexcept {
    static SystemFiles* const system = new SystemFiles; // outlives whatever ends with the program
    return *system;
}

iFileSystem& fileSystem() noexcept {
    iFileSystem* installed = installedFileSystem();
    return installed ? *installed : systemFiles();
}

} // namespace cutroom
