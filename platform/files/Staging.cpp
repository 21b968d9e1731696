#include "platform/files/Staging.h"

#include <unistd.h>

#include <atomic>
#include <new>

namespace cutroom::staging {

namespace {

constexpr std::string_view kTemporarySuffix = ".tmp~";
constexpr std::string_view kOldSuffix = ".old~";

// The most bytes of a name that leave room for what follows them in a name of 255.
constexpr std::size_t kMostOfName = 224;

// "<target>.<process>-<count><suffix>": no two writers of one machine meet, save after a process
// id came round, where making the file anew fails and the next count is tried. Of a long name only
// the beginning stands there.
std::string freshName(const std::string& target, std::string_view suffix) {
    static std::atomic<unsigned> count{0};
    const unsigned number = count.fetch_add(1, std::memory_order_relaxed);
    std::size_t size = target.size() - nameOf(target).size() + kMostOfName;
    while (size < target.size() && (static_cast<unsigned char>(target[size]) & 0xC0) == 0x80)
        --size; // in the midst of a character
    return target.substr(0, size) + format(".%lx-%x%.*s", static_cast<unsigned long>(::getpid()),
                                           number, static_cast<int>(suffix.size()), suffix.data());
}

constexpr int kNameTries = 100;

Status writeAll(iFileSystem& files, iFileSystem::Handle file, std::string_view content) {
    while (!content.empty()) {
        Result<std::size_t> done = files.write(file, content.data(), content.size());
        if (!done)
            return done.status();
        if (*done == 0 || *done > content.size())
            return {StatusCode::inputOutput, {}, "cannot write"};
        content.remove_prefix(*done);
    }
    return {};
}

} // namespace

Status named(Status status, const std::string& path) {
    if (status.ok() || !status.file().empty())
        return status;
    return {status.code(), path, status.message(), status.line()};
}

Result<std::string> writeTemporary(iFileSystem& files, const std::string& target,
                                   std::string_view content, Flush flush) {
    std::string path = freshName(target, kTemporarySuffix);
    Result<iFileSystem::Handle> file = files.open(path, OpenMode::createNew);
    for (int tries = 1; !file && tries < kNameTries && files.stat(path); ++tries) {
        path = freshName(target, kTemporarySuffix);
        file = files.open(path, OpenMode::createNew);
    }
    if (!file)
        return Status(file.status().code(), target, file.status().message());
    Temporary temporary(files, std::move(path));
    Status status = writeAll(files, *file, content);
    if (status.ok() && flush == Flush::now)
        status = files.flush(*file);
    if (Status closed = files.close(*file); status.ok())
        status = closed;
    if (!status)
        return named(status, target);
    return temporary.keep();
}

Result<std::string> linkOld(iFileSystem& files, const std::string& target) {
    std::string path = freshName(target, kOldSuffix);
    Status linked = files.link(target, path);
    for (int tries = 1;
         linked.code() == StatusCode::inputOutput && tries < kNameTries && files.stat(path);
         ++tries) {
        path = freshName(target, kOldSuffix);
        linked = files.link(target, path);
    }
    if (linked.code() == StatusCode::notFound)
        return std::string();
    if (!linked)
        return named(linked, target);
    return path;
}

Status keepAsBackup(iFileSystem& files, const std::string& target, const std::string& old) {
    const Status kept = files.rename(old, target + ".bak");
    if (!kept)
        return kept.code() == StatusCode::notFound ? Status() : named(kept, target);
    // Rename leaves two names of one file alone, so the second one may still be there.
    const Result<FileInfo> left = files.stat(old);
    if (left)
        return named(files.remove(old), target);
    return left.status().code() == StatusCode::notFound ? Status() : named(left.status(), target);
}

Status flushFolder(iFileSystem& files, const std::string& folder) {
    Result<iFileSystem::Handle> open = files.openFolder(folder);
    if (!open)
        return open.status();
    Status status = files.flush(*open);
    if (Status closed = files.close(*open); status.ok())
        status = closed;
    return named(status, folder);
}

void discard(iFileSystem& files, const std::string& path) {
    if (!path.empty())
        (void)files.remove(path);
}

Temporary::~Temporary() {
    try {
        discard(files_, path_);
    } catch (const std::bad_alloc&) { // it stays until the next recovery
    }
}

} // namespace cutroom::staging

namespace cutroom {

// As `freshName` makes them: the suffixes alone are those of other programs' files, too.
bool isTemporaryName(std::string_view name) noexcept {
    static_assert(staging::kTemporarySuffix.size() == staging::kOldSuffix.size());
    if (!name.ends_with(staging::kTemporarySuffix) && !name.ends_with(staging::kOldSuffix))
        return false;
    name.remove_suffix(staging::kOldSuffix.size());
    const std::size_t point = name.rfind('.');
    if (point == 0 || point == std::string_view::npos)
        return false;
    const std::string_view id = name.substr(point + 1);
    const std::size_t dash = id.find('-');
    constexpr std::string_view kDigits = "0123456789abcdef";
    return dash != std::string_view::npos && dash != 0 && dash + 1 < id.size() &&
           id.find_first_not_of(kDigits) == dash &&
           id.find_first_not_of(kDigits, dash + 1) == std::string_view::npos;
}

} // namespace cutroom
