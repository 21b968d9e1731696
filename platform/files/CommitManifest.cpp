#include "platform/files/CommitManifest.h"

#include "platform/files/ByteStream.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/Staging.h"

#include <set>

namespace cutroom::staging {

namespace {

constexpr std::string_view kManifestKind = "commit";
constexpr unsigned kManifestVersion = 1;

bool sound(const Change& change) {
    if (!isInside(change.path) || (change.temporary.empty() && change.old.empty()))
        return false;
    for (const std::string* name : {&change.temporary, &change.old})
        if (!name->empty() && !(isInside(*name) && isTemporaryName(*name)))
            return false;
    return true;
}

bool holds(const std::string& path, const Change& change) {
    const Result<std::string> content = readFile(path);
    return content && content->size() == change.size && checksum(*content) == change.crc;
}

// Whether the target still has the content it had at the decision. Second names are copies where
// the file system has no links, so contents count when the files differ.
bool untouched(iFileSystem& files, const std::string& target, const std::string& old) {
    const Result<FileInfo> now = files.stat(target);
    if (old.empty())
        return !now && now.status().code() == StatusCode::notFound;
    const Result<FileInfo> before = files.stat(old);
    if (!now || !before)
        return false;
    if (now->identity == before->identity)
        return true;
    const Result<std::string> contentNow = readFile(target);
    const Result<std::string> contentBefore = readFile(old);
    return contentNow && contentBefore && *contentNow == *contentBefore;
}

Status ignoreMissing(Status status) {
    return status.code() == StatusCode::notFound ? Status() : status;
}

// Renames the content before to the backup's name.
Status keepOld(iFileSystem& files, const std::string& target, const std::string& old) {
    if (old.empty())
        return {};
    if (Status kept = ignoreMissing(files.rename(old, backupOf(target))); !kept)
        return named(kept, target);
    // Rename leaves two names of one file alone.
    return files.stat(old) ? named(files.remove(old), old) : Status();
}

// Gives whether something was done.
Result<bool> applyOne(iFileSystem& files, const std::string& root, const Change& change) {
    const std::string target = joinPath(root, change.path);
    const std::string old = change.old.empty() ? "" : joinPath(root, change.old);
    const bool removal = change.temporary.empty();
    const std::string marker = removal ? old : joinPath(root, change.temporary);
    const bool due = files.stat(marker).ok();
    if (due) {
        const bool fresh = untouched(files, target, old);
        Status done;
        if (removal)
            done = fresh ? ignoreMissing(files.remove(target)) : Status();
        else
            done = fresh ? files.rename(marker, target) : files.remove(marker);
        if (!done)
            return named(done, target);
    }
    if (Status kept = keepOld(files, target, old); !kept)
        return kept;
    return due;
}

} // namespace

bool isInside(std::string_view path) noexcept {
    if (path.empty() || path.front() == '/' || path.find('\0') != std::string_view::npos)
        return false;
    for (std::size_t from = 0; from <= path.size();) {
        const std::size_t end = std::min(path.find('/', from), path.size());
        const std::string_view part = path.substr(from, end - from);
        if (part.empty() || part == "." || part == "..")
            return false;
        from = end + 1;
    }
    return isUtf8(path);
}

std::string manifestBytes(const std::vector<Change>& changes) {
    ByteWriter out;
    out.varint(changes.size());
    for (const Change& change : changes) {
        out.text(change.path);
        out.text(change.temporary);
        out.text(change.old);
        out.varint(change.size);
        out.u32(change.crc);
    }
    return CheckedFile::wrap(kManifestKind, kManifestVersion, out.bytes());
}

Result<std::vector<Change>> readManifest(const std::string& path) {
    const Result<CheckedFile::Content> file =
        CheckedFile::load(path, kManifestKind, kManifestVersion);
    if (!file)
        return file.status();
    ByteReader in(file->payload());
    std::vector<Change> changes(static_cast<std::size_t>(in.count(8)));
    for (Change& change : changes) {
        change.path = in.text();
        change.temporary = in.text();
        change.old = in.text();
        change.size = in.varint();
        change.crc = in.u32();
        if (in.ok() && !sound(change))
            in.fail();
    }
    if (!in.ok() || !in.atEnd())
        return in.damage(path, file->offset, "the list of changed files is damaged");
    return changes;
}

Result<int> apply(iFileSystem& files, const std::string& root, const std::vector<Change>& changes) {
    int done = 0;
    Status first;
    for (const Change& change : changes) {
        const Result<bool> one = applyOne(files, root, change);
        if (one)
            done += *one ? 1 : 0;
        else if (first.ok())
            first = one.status();
    }
    if (!first)
        return first;
    return done;
}

bool stands(iFileSystem& files, const std::string& root, const std::vector<Change>& changes) {
    bool waiting = false;
    for (const Change& change : changes)
        for (const std::string* name : {&change.temporary, &change.old})
            waiting = waiting || (!name->empty() && files.stat(joinPath(root, *name)));
    if (!waiting)
        return false;
    for (const Change& change : changes) {
        if (change.temporary.empty())
            continue;
        const std::string staged = joinPath(root, change.temporary);
        const std::string& where = files.stat(staged) ? staged : joinPath(root, change.path);
        if (!holds(where, change))
            return false;
    }
    return true;
}

Status flushFolders(iFileSystem& files, const std::string& root,
                    const std::vector<Change>& changes) {
    std::set<std::string> folders;
    for (const Change& change : changes)
        folders.insert(folderOf(joinPath(root, change.path)));
    for (const std::string& folder : folders)
        if (Status flushed = flushFolder(files, folder); !flushed)
            return flushed;
    return {};
}

void discardAll(iFileSystem& files, const std::string& root, const std::vector<Change>& changes) {
    for (const Change& change : changes)
        for (const std::string* name : {&change.temporary, &change.old})
            if (!name->empty())
                discard(files, joinPath(root, *name));
}

} // namespace cutroom::staging
