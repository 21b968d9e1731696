// Copying an outside file into the project.
//
// The copy is written under a temporary name, flushed, and then given its name by a link, which
// never replaces a file that is there. Until the document's locations name it nobody knows it.
#include "bins/DocumentManager.h"
#include "platform/base/IdSource.h"
#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/project/CurrentProject.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

using cutroom::iFileSystem;
using cutroom::OpenMode;
using cutroom::Result;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;
constexpr std::size_t kLongestName = 240; // bytes, with room for a number

// Handles do not know their paths.
Status named(const Status& status, const std::string& path) {
    return status.ok() || !status.file().empty() ? status
                                                 : Status(status.code(), path, status.message());
}

Status writeBlock(iFileSystem& files, iFileSystem::Handle to, const char* data, std::size_t size) {
    while (size != 0) {
        const Result<std::size_t> written = files.write(to, data, size);
        if (!written)
            return written.status();
        if (*written == 0 || *written > size)
            return {StatusCode::inputOutput, {}, "cannot write"};
        data += *written;
        size -= *written;
    }
    return {};
}

// The file is copied at the length that it had: one that grows meanwhile ends.
Status copyBytes(iFileSystem& files, const std::string& source, iFileSystem::Handle from,
                 iFileSystem::Handle to, std::uint64_t bytes) {
    std::vector<char> block(static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, bytes)));
    while (bytes != 0) {
        const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), bytes));
        const Result<std::size_t> got = files.read(from, block.data(), most);
        if (!got)
            return named(got.status(), source);
        if (*got == 0)
            return {StatusCode::failed, source, "became shorter while it was copied"};
        if (Status written = writeBlock(files, to, block.data(), *got); !written)
            return written;
        bytes -= *got;
    }
    return files.flush(to);
}

Status copyTo(iFileSystem& files, const std::string& source, const std::string& target,
              std::uint64_t bytes) {
    const auto from = files.open(source, OpenMode::read);
    if (!from)
        return from.status();
    const auto to = files.open(target, OpenMode::createNew);
    Status status = to.status();
    if (to) {
        status = copyBytes(files, source, *from, *to, bytes);
        if (Status closed = files.close(*to); status)
            status = closed;
        if (!status)
            (void)files.remove(target); // litter at the worst, which the next opening removes
    }
    (void)files.close(*from); // nothing was written through it
    return named(status, target);
}

Status flushFolder(iFileSystem& files, const std::string& folder) {
    const auto open = files.openFolder(folder);
    if (!open)
        return open.status();
    const Status flushed = files.flush(*open);
    const Status closed = files.close(*open);
    return named(flushed ? closed : flushed, folder);
}

// Reads what there is, up to a whole block.
Result<std::size_t> readBlock(iFileSystem& files, iFileSystem::Handle file,
                              std::vector<char>& block) {
    std::size_t filled = 0;
    while (filled < block.size()) {
        const Result<std::size_t> got =
            files.read(file, block.data() + filled, block.size() - filled);
        if (!got)
            return got;
        if (*got == 0)
            break;
        filled += *got;
    }
    return filled;
}

// False too when either cannot be read.
bool holdTheSame(iFileSystem& files, const std::string& one, const std::string& other) {
    const auto a = files.open(one, OpenMode::read);
    const auto b = files.open(other, OpenMode::read);
    std::vector<char> mine(kBlock), others(kBlock);
    bool same = a && b;
    for (std::size_t size = kBlock; same && size == kBlock;) {
        const auto read = readBlock(files, *a, mine), asked = readBlock(files, *b, others);
        same = read && asked && *read == *asked &&
               std::equal(mine.begin(), mine.begin() + static_cast<std::ptrdiff_t>(*read),
                          others.begin());
        size = same ? *read : 0;
    }
    for (const auto* const file : {&a, &b})
        if (*file)
            (void)files.close(**file); // only read from
    return same;
}

// `name` as number `number` of that name, cut where it is too long for a file system.
std::string numbered(const std::string& name, int number) {
    std::string extension = cutroom::extensionOf(name);
    if (!extension.empty())
        extension.insert(0, ".");
    if (extension.size() > kLongestName / 2)
        extension.clear();
    std::string stem = name.substr(0, name.size() - extension.size());
    stem.resize(std::min(stem.size(), kLongestName - extension.size()));
    while (!cutroom::isUtf8(stem))
        stem.pop_back();
    if (number > 1)
        stem += cutroom::format(" (%d)", number);
    return stem + extension + (cutroom::isTemporaryName(name) ? "_" : "");
}

// Gives the finished copy a free name like `name` in its folder, and gives its path. A file of the
// same content takes its place: a copy whose document was not saved with it, for instance.
Result<std::string> settle(iFileSystem& files, const std::string& temporary,
                           const std::string& name) {
    const std::string folder = cutroom::folderOf(temporary);
    for (int number = 1;; ++number) {
        std::string path = cutroom::joinPath(folder, numbered(name, number));
        if (cutroom::fileExists(path)) {
            if (!holdTheSame(files, temporary, path))
                continue;
            (void)files.remove(temporary); // litter at the worst
            return path;
        }
        if (Status linked = files.link(temporary, path); !linked) {
            if (cutroom::fileExists(path))
                continue; // taken in between
            (void)files.remove(temporary);
            return linked;
        }
        (void)files.remove(temporary); // its other name; litter at the worst
        if (Status flushed = flushFolder(files, folder); !flushed) {
            (void)files.remove(path);
            return flushed;
        }
        return path;
    }
}

struct Source {
    std::string path;
    std::uint64_t bytes = 0;
};

// Opening a pipe may wait for ever, and a device has no content to keep.
bool isPipeOrDevice(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_other(std::filesystem::status(path, ignored));
}

Result<Source> findSource(const Document& document) {
    for (const auto& location : document.getLocations()) {
        const auto path = cutroom::narrowPath(location);
        if (!path)
            continue;
        const auto info = cutroom::fileSystem().stat(*path);
        if (info && !info->folder && !isPipeOrDevice(*path))
            return Source{*path, info->size};
    }
    const std::string first = cutroom::toUtf8(document.getFileName());
    return Status(StatusCode::notFound, first.empty() ? document.getID().asString() : first,
                  first.empty() ? "has no location" : "there is no such file");
}

} // namespace

Status Document::localise() {
    if (!managed() || !CurrentProject::isOpen())
        return {StatusCode::wrongUsage, getID().asString(), "is not in an open project"};
    if (CurrentProject::isReadOnly())
        return {StatusCode::failed, CurrentProject::getFolder(),
                "the project is open for reading only"};
    return DocumentManager::instance().localise(*this);
}

Status DocumentManager::localise(Document& document) {
    const Cookie id = document.getID();
    if (isLocal(id) && cutroom::fileExists(cutroom::toUtf8(document.getFileName())))
        return {};
    const Result<Source> source = findSource(document);
    if (!source)
        return source.status();
    iFileSystem& files = cutroom::fileSystem();
    const std::string folder = cutroom::toUtf8(getLocalLocation(id));
    if (Status made = cutroom::makeFolders(folder); !made)
        return made;
    const std::string temporary = cutroom::joinPath(
        folder, cutroom::format("copy.%016llx-0.tmp~",
                                static_cast<unsigned long long>(cutroom::idSource().nextId())));
    if (Status copied = copyTo(files, source->path, temporary, source->bytes); !copied)
        return copied;
    const Result<std::string> copy = settle(files, temporary, cutroom::nameOf(source->path));
    if (!copy)
        return copy.status();
    Status taken = takeCopy(document, *copy, source->bytes);
    if (!taken)
        (void)cutroom::removeFile(*copy); // the failure that counts is being reported
    return taken;
}

// The document may have gone while its file was copied.
Status DocumentManager::takeCopy(Document& document, const std::string& copy, std::uint64_t bytes) {
    const CriticalSection::Lock whole(filesLock_);
    if (!document.managed())
        return {StatusCode::wrongUsage, document.getID().asString(), "is no longer in the project"};
    const ContainerModifier<Document> batch(Kv::Ptr<Document>(&document), "localise");
    auto locations = document.getLocations();
    std::erase(locations, cutroom::toWide(copy)); // an earlier copy of that name had gone
    locations.insert(locations.begin(), cutroom::toWide(copy));
    document.setLocations(locations);
    document.setSize(bytes);
    return {};
}
