// Preloaded into a program: lets chosen system calls that change files below a folder fail.
//
//   FAULT_BELOW=FOLDER   whose calls count, from 0
//   FAULT_AT=NUMBER      the call that fails; none when negative
//   FAULT_LIKE=once      that one
//             =kind      and every later one of its kind
//             =all       and every later one
//             =short     that one writes half of its bytes and says so
//             =end       the process ends there (status 99), a write half done
//   FAULT_ERROR=ERRNO    what a failing call gives
//   FAULT_REPORT=FILE    gets a line for each call: its kind and path, "!" before those that failed
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <mutex>
#include <string>

#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

// The function of that name that this library hides.
template <class Call> Call* next(Call*, const char* name) {
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

std::string pathOf(int file) {
    char path[4096];
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    const ssize_t size = readlink(link.c_str(), path, sizeof path);
    return size > 0 ? std::string(path, static_cast<std::size_t>(size)) : std::string();
}

std::string pathOf(int folder, const char* path) {
    if (*path == '/')
        return path;
    if (folder != AT_FDCWD)
        return pathOf(folder) + '/' + path;
    char here[4096];
    return getcwd(here, sizeof here) ? std::string(here) + '/' + path : std::string(path);
}

class Faults {
public:
    static Faults& instance() {
        static Faults& faults = *new Faults; // outlives the program's last file
        return faults;
    }

    // Counts a call; true when it fails.
    bool strikes(const std::string& kind, const std::string& path) {
        if (below_.empty() || !path.starts_with(below_))
            return false;
        const std::scoped_lock lock(mutex_);
        const long number = count_++;
        const bool struck = at_ >= 0 && (number == at_ || (number > at_ && goesOn(kind)));
        if (number == at_)
            kind_ = kind;
        report((struck ? "!" : "") + kind + " " + path + "\n");
        if (struck && like_ == "end" && kind != "write")
            _exit(99);
        if (struck)
            errno = error_;
        return struck;
    }
    // How many bytes a failing write still writes.
    std::size_t shareOf(std::size_t size) const {
        return like_ == "once" || like_ == "kind" ? 0 : (size + 1) / 2;
    }
    // The result of a write after it wrote its share.
    ssize_t outcome(ssize_t written) const {
        if (like_ == "end")
            _exit(99);
        errno = error_;
        return like_ == "short" ? written : -1;
    }

private:
    bool goesOn(const std::string& kind) const {
        return like_ == "all" || (like_ == "kind" && kind == kind_);
    }
    void report(const std::string& line) const {
        const long file = syscall(SYS_openat, AT_FDCWD, report_.c_str(),
                                  O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
        if (file < 0 || syscall(SYS_write, file, line.data(), line.size()) < 0)
            _exit(98);
        syscall(SYS_close, file);
    }

    const std::string below_ = variable("FAULT_BELOW");
    const std::string like_ = variable("FAULT_LIKE");
    const std::string report_ = variable("FAULT_REPORT");
    const long at_ = std::atol(variable("FAULT_AT").c_str());
    const int error_ = std::atoi(variable("FAULT_ERROR").c_str());
    std::mutex mutex_; // guards the next two
    long count_ = 0;
    std::string kind_; // of the call that failed first
};

bool fails(const char* kind, const std::string& path) {
    return Faults::instance().strikes(kind, path);
}

template <class Write> ssize_t writeOf(int file, std::size_t size, const Write& write) {
    Faults& faults = Faults::instance();
    if (!fails("write", pathOf(file)))
        return write(size);
    const std::size_t share = faults.shareOf(size);
    return faults.outcome(share > 0 ? write(share) : 0);
}

template <class Open> int openOf(int folder, const char* path, int flags, const Open& open) {
    const bool writes = (flags & O_ACCMODE) != O_RDONLY;
    return writes && fails("open", pathOf(folder, path)) ? -1 : open();
}

mode_t modeOf(int flags, va_list words) { return flags & O_CREAT ? va_arg(words, mode_t) : 0; }

} // namespace

extern "C" {
#pragma GCC visibility push(default)

int open(const char* path, int flags, ...) {
    va_list words;
    va_start(words, flags);
    const mode_t mode = modeOf(flags, words);
    va_end(words);
    return openOf(AT_FDCWD, path, flags,
                  [&] { return next(&open, "open")(path, flags | O_LARGEFILE, mode); });
}
int open64(const char* path, int flags, ...) {
    va_list words;
    va_start(words, flags);
    const mode_t mode = modeOf(flags, words);
    va_end(words);
    return open(path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
    va_list words;
    va_start(words, flags);
    const mode_t mode = modeOf(flags, words);
    va_end(words);
    return openOf(folder, path, flags,
                  [&] { return next(&openat, "openat")(folder, path, flags, mode); });
}
ssize_t write(int file, const void* bytes, size_t size) {
    return writeOf(file, size,
                   [&](size_t most) { return next(&write, "write")(file, bytes, most); });
}
ssize_t pwrite(int file, const void* bytes, size_t size, off_t at) {
    return writeOf(file, size,
                   [&](size_t most) { return next(&pwrite, "pwrite")(file, bytes, most, at); });
}
ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t at) {
    return pwrite(file, bytes, size, at);
}
int fsync(int file) { return fails("fsync", pathOf(file)) ? -1 : next(&fsync, "fsync")(file); }
int fdatasync(int file) {
    return fails("fsync", pathOf(file)) ? -1 : next(&fdatasync, "fdatasync")(file);
}
int syncfs(int file) noexcept {
    return fails("fsync", pathOf(file)) ? -1 : next(&syncfs, "syncfs")(file);
}
int flock(int file, int how) noexcept {
    return fails("lock", pathOf(file)) ? -1 : next(&flock, "flock")(file, how);
}
int ftruncate(int file, off_t size) noexcept {
    return fails("truncate", pathOf(file)) ? -1 : next(&ftruncate, "ftruncate")(file, size);
}
int ftruncate64(int file, off64_t size) noexcept { return ftruncate(file, size); }
int rename(const char* from, const char* to) noexcept {
    return fails("rename", pathOf(AT_FDCWD, to)) ? -1 : next(&rename, "rename")(from, to);
}
int link(const char* from, const char* to) noexcept {
    return fails("link", pathOf(AT_FDCWD, to)) ? -1 : next(&link, "link")(from, to);
}
int unlink(const char* path) noexcept {
    return fails("unlink", pathOf(AT_FDCWD, path)) ? -1 : next(&unlink, "unlink")(path);
}
int remove(const char* path) noexcept {
    return fails("unlink", pathOf(AT_FDCWD, path)) ? -1 : next(&remove, "remove")(path);
}
int mkdir(const char* path, mode_t mode) noexcept {
    return fails("mkdir", pathOf(AT_FDCWD, path)) ? -1 : next(&mkdir, "mkdir")(path, mode);
}

#pragma GCC visibility pop
}
