#include "platform/files/Files.h"

#include "platform/files/Staging.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace cutroom {

using namespace staging;

namespace {

// Puts the present content of `path` under its backup's name while `path` keeps it too.
Status keepBackup(iFileSystem& files, const std::string& path) {
    Result<std::string> old = linkOld(files, path);
    if (!old)
        return old.status();
    if (old->empty())
        return {};
    Temporary second(files, std::move(*old));
    Status kept = keepAsBackup(files, path, second.path());
    if (kept.ok())
        second.keep();
    return kept;
}

Status tooLarge(std::uint64_t maxBytes) {
    return {StatusCode::damaged,
            {},
            format("is larger than %llu bytes", static_cast<unsigned long long>(maxBytes))};
}

// Reads to the end, which is known to be at `size` unless that is 0 (a device, a pipe).
Status readInto(iFileSystem& files, iFileSystem::Handle file, std::string& content,
                std::uint64_t size, std::uint64_t maxBytes) {
    // In pieces that stay in the processor's cache between being made and being filled.
    constexpr std::size_t kMore = 65536;
    const auto whole = static_cast<std::size_t>(size);
    content.reserve(whole);
    content.resize(size ? std::min(whole, kMore) : kMore);
    std::size_t filled = 0;
    for (;;) {
        Result<std::size_t> got =
            files.read(file, content.data() + filled, content.size() - filled);
        if (!got)
            return got.status();
        filled += std::min(*got, content.size() - filled);
        if (*got == 0 || (size && filled == size))
            break;
        if (filled > maxBytes)
            return tooLarge(maxBytes);
        if (filled == content.size())
            content.resize(size ? std::min(whole, filled + kMore) : filled + kMore);
    }
    content.resize(filled);
    return {};
}

// All that an open file holds. Asked of the handle, since another file may take the name meanwhile.
Result<std::string> readOpened(iFileSystem& files, iFileSystem::Handle file,
                               std::uint64_t maxBytes) {
    const Result<FileInfo> info = files.stat(file);
    if (!info)
        return info.status();
    if (info->folder)
        return Status(StatusCode::inputOutput, {}, "is a folder");
    if (info->size > maxBytes)
        return tooLarge(maxBytes);
    std::string content;
    if (Status read = readInto(files, file, content, info->size, maxBytes); !read)
        return read;
    return content;
}

} // namespace

Result<std::string> readFile(const std::string& path, std::uint64_t maxBytes) {
    if (Status usable = checkPath(path); !usable)
        return usable;
    iFileSystem& files = fileSystem();
    const Result<iFileSystem::Handle> file = files.open(path, OpenMode::read);
    if (!file)
        return file.status();
    Result<std::string> content = readOpened(files, *file, maxBytes);
    const Status closed = files.close(*file);
    if (!content)
        return named(content.status(), path);
    if (!closed)
        return named(closed, path);
    return content;
}

Status writeFile(const std::string& path, std::string_view content, Backup backup) {
    if (Status usable = checkPath(path); !usable)
        return usable;
    iFileSystem& files = fileSystem();
    const std::string folder = folderOf(path); // after the renaming nothing runs out of memory
    Result<std::string> written = writeTemporary(files, path, content, Flush::now);
    if (!written)
        return written.status();
    Temporary temporary(files, std::move(*written));
    if (Status kept = backup == Backup::keep ? keepBackup(files, path) : Status(); !kept)
        return kept;
    if (Status renamed = files.rename(temporary.path(), path); !renamed)
        return named(renamed, path);
    temporary.keep();
    return flushFolder(files, folder);
}

Status writeOutput(const std::string& path, std::string_view content) {
    if (Status usable = checkPath(path); !usable)
        return usable;
    namespace fs = std::filesystem;
    std::error_code failure;
    const fs::file_status there = fs::status(path, failure);
    if (fs::is_directory(there))
        return {StatusCode::inputOutput, path, "is a folder"};
    if (fs::exists(there) && !fs::is_regular_file(there)) {
        std::ofstream stream(path, std::ios::binary);
        stream << content << std::flush;
        return stream ? Status() : Status(StatusCode::inputOutput, path, "cannot be written");
    }
    const fs::path target = fs::exists(there) ? fs::canonical(path, failure) : fs::path(path);
    const Status written = writeFile(failure ? path : target.string(), content, Backup::none);
    if (written.code() == StatusCode::notFound) // the folder; no named thing is missing
        return {StatusCode::inputOutput, written.file(), written.message()};
    return written;
}

Status removeFile(const std::string& path) {
    if (Status usable = checkPath(path); !usable)
        return usable;
    iFileSystem& files = fileSystem();
    const Status removed = files.remove(path);
    if (removed.code() == StatusCode::notFound)
        return {};
    return removed.ok() ? flushFolder(files, folderOf(path)) : named(removed, path);
}

Status moveFile(const std::string& from, const std::string& to) {
    for (const std::string* path : {&from, &to})
        if (Status usable = checkPath(*path); !usable)
            return usable;
    iFileSystem& files = fileSystem();
    if (Status renamed = files.rename(from, to); !renamed)
        return named(renamed, from);
    Status flushed = flushFolder(files, folderOf(to));
    if (flushed.ok() && folderOf(from) != folderOf(to))
        flushed = flushFolder(files, folderOf(from));
    return flushed;
}

Status copyFile(const std::string& from, const std::string& to) {
    const Result<std::string> content = readFile(from);
    return content ? writeFile(to, *content, Backup::none) : content.status();
}

Result<std::string> moveAside(const std::string& path) {
    std::string aside = path + ".damaged";
    for (int number = 2; fileExists(aside); ++number)
        aside = format("%s.damaged.%d", path.c_str(), number);
    if (Status moved = moveFile(path, aside); !moved)
        return moved;
    return aside;
}

Status makeFolders(const std::string& path) {
    if (Status usable = checkPath(path); !usable)
        return usable;
    iFileSystem& files = fileSystem();
    const Result<FileInfo> there = files.stat(path);
    if (there && there->folder)
        return {};
    if (there)
        return {StatusCode::inputOutput, path, "is a file where a folder is needed"};
    if (there.status().code() != StatusCode::notFound)
        return there.status();
    const std::string above = folderOf(path);
    if (above != path && above != ".")
        if (Status made = makeFolders(above); !made)
            return made;
    if (Status made = files.makeFolder(path); !made)
        return named(made, path);
    return flushFolder(files, above);
}

Result<std::vector<std::string>> listFiles(const std::string& folder, std::string_view suffix) {
    iFileSystem& files = fileSystem();
    Result<std::vector<std::string>> names = files.list(folder);
    if (names.status().code() == StatusCode::notFound)
        return std::vector<std::string>();
    if (!names)
        return names.status();
    std::erase_if(*names, [&](const std::string& name) {
        const bool isHidden = !suffix.empty() && name.starts_with('.');
        if (!name.ends_with(suffix) || isHidden || isTemporaryName(name) || !isUtf8(name))
            return true;
        const Result<FileInfo> info = files.stat(joinPath(folder, name));
        return !info || info->folder;
    });
    return names;
}

bool fileExists(const std::string& path) noexcept {
    try {
        return fileSystem().stat(path).ok();
    } catch (...) {
        return false; // out of memory
    }
}

Result<int> removeTemporaries(const std::string& folder) {
    iFileSystem& files = fileSystem();
    const Result<std::vector<std::string>> names = files.list(folder);
    if (!names)
        return names.status();
    int removed = 0;
    for (const std::string& name : *names) {
        if (!isTemporaryName(name))
            continue;
        const std::string path = joinPath(folder, name);
        if (Status gone = files.remove(path); !gone && gone.code() != StatusCode::notFound)
            return named(gone, path);
        ++removed;
    }
    return removed;
}

} // namespace cutroom
