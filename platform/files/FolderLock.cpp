#include "platform/files/FolderLock.h"

#include "platform/files/Staging.h"

#include <unistd.h>

#include <utility>

namespace cutroom {

namespace {

constexpr std::string_view kLockName = "lock";

// Leaves this process's number in the lock file, for the message that another one gives.
Status leaveNumber(iFileSystem& files, iFileSystem::Handle file) {
    const std::string number = toText(static_cast<long long>(::getpid())) + "\n";
    if (Status cut = files.truncate(file, 0); !cut)
        return cut;
    for (std::size_t done = 0; done < number.size();) {
        Result<std::size_t> put = files.write(file, number.data() + done, number.size() - done);
        if (!put)
            return put.status();
        done += *put;
    }
    return {};
}

std::string holderText(const std::string& path) {
    const Result<std::string> content = readFile(path, 64);
    const std::optional<unsigned long long> number =
        content ? parseUnsigned(trim(*content)) : std::nullopt;
    if (!number)
        return "is open for writing in another process";
    return format("is open for writing in process %llu", *number);
}

} // namespace

Result<FolderLock> FolderLock::take(const std::string& folder) {
    iFileSystem& files = fileSystem();
    const std::string path = joinPath(folder, kLockName);
    Result<iFileSystem::Handle> file = files.open(path, OpenMode::readWrite);
    if (!file)
        return file.status();
    FolderLock lock(files, *file);
    const Status taken = files.lock(*file);
    if (taken.code() == StatusCode::locked)
        return Status(StatusCode::locked, folder, holderText(path));
    if (!taken)
        return staging::named(taken, path);
    if (Status left = leaveNumber(files, *file); !left)
        return staging::named(left, path);
    return lock;
}

FolderLock::FolderLock(FolderLock&& other) noexcept
    : files_(std::exchange(other.files_, nullptr)), handle_(other.handle_) {}

FolderLock& FolderLock::operator=(FolderLock&& other) noexcept {
    if (this != &other) {
        drop();
        files_ = std::exchange(other.files_, nullptr);
        handle_ = other.handle_;
    }
    return *this;
}

FolderLock::~FolderLock() { drop(); }

void FolderLock::drop() noexcept {
    if (files_)
        (void)files_->close(handle_); // only the lock goes; nothing was meant to reach the disk
    files_ = nullptr;
}

} // namespace cutroom
