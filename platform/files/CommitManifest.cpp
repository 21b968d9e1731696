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

// Not there is an answer; not to be found out is a failure.
Result<bool> isThere(iFileSystem& files, const std::string& path) {
    const Result<FileInfo> info = files.stat(path);
    if (info || info.status().code() == StatusCode::notFound)
        return info.ok();
    return info.status();
}

Result<bool> holds(const std::string& path, const Change& change) {
    const Result<std::string> content = readFile(path);
    if (!content && content.status().code() != StatusCode::notFound)
        return content.status();
    return content && content->size() == change.size && checksum(*content) == change.crc;
}

// Second names are copies where the file system has no links, so contents count when the files
// differ.
Result<bool> isSame(iFileSystem& files, const std::string& one, const std::string& other) {
    const Result<FileInfo> first = files.stat(one);
    const Result<FileInfo> second = files.stat(other);
    for (const Result<FileInfo>* info : {&first, &second})
        if (!*info)
            return info->status();
    if (first->identity == second->identity || first->size != second->size)
        return first->identity == second->identity;
    const Result<std::string> content = readFile(one);
    const Result<std::string> otherContent = readFile(other);
    for (const Result<std::string>* read : {&content, &otherContent})
        if (!*read)
            return read->status();
    return *content == *otherContent;
}

// Whether the target still is what it was at the decision.
Result<bool> untouched(iFileSystem& files, const std::string& target, const std::string& old) {
    Result<bool> there = isThere(files, target);
    if (!there || old.empty())
        return there ? Result<bool>(!*there) : there;
    if (!*there)
        return false;
    const Result<bool> before = isThere(files, old);
    return before && *before ? isSame(files, target, old) : before;
}

// Gives whether something was done. The staged file, or of a removal the second name, tells that
// the change is due.
Result<bool> applyOne(iFileSystem& files, const std::string& root, const Change& change) {
    const std::string target = joinPath(root, change.path);
    const std::string old = change.old.empty() ? "" : joinPath(root, change.old);
    const bool removal = change.temporary.empty();
    const std::string marker = removal ? old : joinPath(root, change.temporary);
    const Result<bool> due = isThere(files, marker);
    if (!due)
        return named(due.status(), target);
    if (*due) {
        const Result<bool> fresh = untouched(files, target, old);
        if (!fresh)
            return named(fresh.status(), target);
        Status done;
        if (removal)
            done = *fresh ? files.remove(target) : Status();
        else
            done = *fresh ? files.rename(marker, target) : files.remove(marker);
        if (!done)
            return named(done, target);
    }
    if (Status kept = old.empty() ? Status() : keepAsBackup(files, target, old); !kept)
        return kept;
    return *due;
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

Result<bool> stands(iFileSystem& files, const std::string& root,
                    const std::vector<Change>& changes) {
    bool waiting = false;
    bool complete = true;
    for (const Change& change : changes) {
        bool staged = false;
        for (const std::string* name : {&change.temporary, &change.old}) {
            const Result<bool> there =
                name->empty() ? Result<bool>(false) : isThere(files, joinPath(root, *name));
            if (!there)
                return there.status();
            waiting = waiting || *there;
            staged = staged || (name == &change.temporary && *there);
        }
        if (change.temporary.empty())
            continue;
        const Result<bool> sound =
            holds(joinPath(root, staged ? change.temporary : change.path), change);
        if (!sound)
            return sound.status();
        complete = complete && *sound;
    }
    return waiting && complete;
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
