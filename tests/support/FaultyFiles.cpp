#include "tests/support/FaultyFiles.h"

#include <algorithm>

namespace cutroom::test {

void FaultyFiles::arm(long at, Span span, std::string message) {
    at_ = at;
    span_ = span;
    message_ = std::move(message);
    struck_ = false;
    operations_.clear();
}

long FaultyFiles::count(const std::string& kind) const {
    return std::count_if(operations_.begin(), operations_.end(), [&](const std::string& one) {
        return one.substr(0, one.find(' ')) == kind;
    });
}

Status FaultyFiles::strike(const std::string& kind, const std::string& path) {
    const long number = static_cast<long>(operations_.size());
    operations_.push_back(path.empty() ? kind : kind + " " + path);
    if (at_ < 0 || number < at_)
        return {};
    if (number == at_)
        struckKind_ = kind;
    else if (span_ == Span::once || (span_ == Span::sameForEver && kind != struckKind_))
        return {};
    struck_ = true;
    return {StatusCode::inputOutput, path, message_};
}

Result<iFileSystem::Handle> FaultyFiles::open(const std::string& path, OpenMode mode) {
    if (Status bad = strike(mode == OpenMode::read ? "open" : "create", path); !bad)
        return bad;
    Result<Handle> file = below_.open(path, mode);
    if (file)
        open_.insert(*file);
    return file;
}

Result<std::size_t> FaultyFiles::read(Handle file, char* buffer, std::size_t size) {
    if (Status bad = strike("read"); !bad)
        return bad;
    return below_.read(file, buffer, size);
}

Result<std::size_t> FaultyFiles::write(Handle file, const char* data, std::size_t size) {
    if (Status bad = strike("write"); !bad) {
        if (span_ != Span::allForEver)
            return bad;
        // The disk was full, or the process ended, in the middle.
        (void)below_.write(file, data, size / 2);
        return bad;
    }
    return below_.write(file, data, most_ ? std::min(most_, size) : size);
}

Status FaultyFiles::truncate(Handle file, std::uint64_t size) {
    Status bad = strike("truncate");
    return bad.ok() ? below_.truncate(file, size) : bad;
}

Status FaultyFiles::flush(Handle file) {
    Status bad = strike("flush");
    return bad.ok() ? below_.flush(file) : bad;
}

Status FaultyFiles::lock(Handle file) {
    Status bad = strike("lock");
    return bad.ok() ? below_.lock(file) : bad;
}

Status FaultyFiles::close(Handle file) {
    Status bad = strike("close");
    open_.erase(file);
    Status closed = below_.close(file);
    return bad.ok() ? closed : bad;
}

Result<iFileSystem::Handle> FaultyFiles::openFolder(const std::string& path) {
    if (Status bad = strike("openFolder", path); !bad)
        return bad;
    Result<Handle> folder = below_.openFolder(path);
    if (folder)
        open_.insert(*folder);
    return folder;
}

Status FaultyFiles::flushAll(Handle folder) {
    Status bad = strike("flushAll");
    return bad.ok() ? below_.flushAll(folder) : bad;
}

Result<FileInfo> FaultyFiles::stat(const std::string& path) {
    if (Status bad = strike("stat", path); !bad)
        return bad;
    return below_.stat(path);
}

Status FaultyFiles::rename(const std::string& from, const std::string& to) {
    Status bad = strike("rename", to);
    return bad.ok() ? below_.rename(from, to) : bad;
}

Status FaultyFiles::remove(const std::string& path) {
    Status bad = strike("remove", path);
    return bad.ok() ? below_.remove(path) : bad;
}

Status FaultyFiles::link(const std::string& from, const std::string& to) {
    Status bad = strike("link", to);
    return bad.ok() ? below_.link(from, to) : bad;
}

Status FaultyFiles::makeFolder(const std::string& path) {
    Status bad = strike("makeFolder", path);
    return bad.ok() ? below_.makeFolder(path) : bad;
}

Result<std::vector<std::string>> FaultyFiles::list(const std::string& path) {
    if (Status bad = strike("list", path); !bad)
        return bad;
    return below_.list(path);
}

} // namespace cutroom::test
