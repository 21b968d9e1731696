#include "tests/support/PowerCutDisk.h"

#include "platform/files/Files.h"

#include <algorithm>
#include <set>

namespace cutroom::test {

namespace {

Status missing(const std::string& path) {
    return {StatusCode::notFound, path, "No such file or directory"};
}

// What may be left of content that was not flushed.
std::string torn(const std::string& flushed, const std::string& now, std::mt19937& random) {
    const std::size_t cut = now.empty() ? 0 : random() % (now.size() + 1);
    switch (random() % 5) {
    case 0:
        return flushed;
    case 1:
        return now.substr(0, cut);
    case 2:
        return std::string(now.size(), '\0');
    case 3:
        return now.substr(0, cut) + std::string(now.size() - cut, '\0');
    default:
        return now;
    }
}

} // namespace

void PowerCutDisk::apply(std::map<std::string, int>& entries, const Change& change) {
    for (const auto& [path, content] : change.entries) {
        if (content)
            entries[path] = content;
        else
            entries.erase(path);
    }
}

void PowerCutDisk::change(Change change) {
    apply(entries_, change);
    pending_.push_back(std::move(change));
}

PowerCutDisk PowerCutDisk::afterCut(std::mt19937& random) const {
    PowerCutDisk found = *this;
    found.open_.clear();
    found.pending_.clear();
    found.entries_ = flushedEntries_;
    std::map<std::string, std::size_t> kept; // changes that each folder keeps
    std::map<std::string, std::size_t> count;
    for (const Change& one : pending_)
        ++count[folderOf(one.entries.front().first)];
    for (const auto& [folder, changes] : count)
        kept[folder] = random() % (changes + 1);
    for (const Change& one : pending_) {
        std::size_t& left = kept[folderOf(one.entries.front().first)];
        if (left == 0)
            continue;
        --left;
        apply(found.entries_, one);
    }
    found.flushedEntries_ = found.entries_;
    for (auto& [number, content] : found.contents_) {
        if (content.now != content.flushed)
            content.now = torn(content.flushed, content.now, random);
        content.flushed = content.now;
    }
    return found;
}

void PowerCutDisk::settle() {
    pending_.clear();
    flushedEntries_ = entries_;
    for (auto& [number, content] : contents_)
        content.flushed = content.now;
}

std::map<std::string, std::string> PowerCutDisk::files() const {
    std::map<std::string, std::string> all;
    for (const auto& [path, content] : entries_)
        all[path] = contents_.at(content).now;
    return all;
}

Result<iFileSystem::Handle> PowerCutDisk::open(const std::string& path, OpenMode mode) {
    const auto at = entries_.find(path);
    if (at == entries_.end() && mode == OpenMode::read)
        return missing(path);
    if (at != entries_.end() && mode == OpenMode::createNew)
        return Status(StatusCode::inputOutput, path, "File exists");
    int content = 0;
    if (at != entries_.end()) {
        content = at->second;
    } else {
        content = ++last_;
        contents_[content] = {};
        change({{{path, content}}});
    }
    const Handle handle = ++last_;
    open_[handle] = {{}, content, 0};
    return handle;
}

Result<std::size_t> PowerCutDisk::read(Handle file, char* buffer, std::size_t size) {
    Open& open = open_.at(file);
    const std::string& now = contents_.at(open.content).now;
    const std::size_t got = now.copy(buffer, size, std::min(open.at, now.size()));
    open.at += got;
    return got;
}

Result<std::size_t> PowerCutDisk::write(Handle file, const char* data, std::size_t size) {
    Open& open = open_.at(file);
    std::string& now = contents_.at(open.content).now;
    now.resize(std::max(now.size(), open.at + size));
    now.replace(open.at, size, data, size);
    open.at += size;
    return size;
}

Status PowerCutDisk::truncate(Handle file, std::uint64_t size) {
    Open& open = open_.at(file);
    contents_.at(open.content).now.resize(static_cast<std::size_t>(size));
    open.at = static_cast<std::size_t>(size);
    return {};
}

// A flush of a folder keeps what happened to its own entries only.
Status PowerCutDisk::flush(Handle file) {
    const Open& open = open_.at(file);
    if (open.folder.empty()) {
        Content& content = contents_.at(open.content);
        content.flushed = content.now;
        return {};
    }
    std::erase_if(pending_, [&](const Change& one) {
        if (folderOf(one.entries.front().first) != open.folder)
            return false;
        apply(flushedEntries_, one);
        return true;
    });
    return {};
}

Status PowerCutDisk::close(Handle file) {
    open_.erase(file);
    return {};
}

Result<iFileSystem::Handle> PowerCutDisk::openFolder(const std::string& path) {
    const Handle handle = ++last_;
    open_[handle] = {path, 0, 0};
    return handle;
}

Status PowerCutDisk::flushAll(Handle) {
    settle();
    return {};
}

Result<FileInfo> PowerCutDisk::stat(const std::string& path) {
    const auto at = entries_.find(path);
    if (at != entries_.end()) {
        const Content& content = contents_.at(at->second);
        return FileInfo{false, content.now.size(), 0, static_cast<std::uint64_t>(at->second)};
    }
    const auto below = entries_.lower_bound(path + "/");
    if (below != entries_.end() && below->first.starts_with(path + "/"))
        return FileInfo{true, 0, 0, 0};
    return missing(path);
}

Status PowerCutDisk::rename(const std::string& from, const std::string& to) {
    const auto at = entries_.find(from);
    if (at == entries_.end())
        return missing(from);
    const auto there = entries_.find(to);
    if (there == entries_.end() || there->second != at->second)
        change({{{to, at->second}, {from, 0}}});
    return {};
}

Status PowerCutDisk::remove(const std::string& path) {
    if (!entries_.contains(path))
        return missing(path);
    change({{{path, 0}}});
    return {};
}

Status PowerCutDisk::link(const std::string& from, const std::string& to) {
    const auto at = entries_.find(from);
    if (at == entries_.end())
        return missing(from);
    if (entries_.contains(to))
        return {StatusCode::inputOutput, to, "File exists"};
    change({{{to, at->second}}});
    return {};
}

Status PowerCutDisk::makeFolder(const std::string&) { return {}; }

Result<std::vector<std::string>> PowerCutDisk::list(const std::string& path) {
    std::set<std::string> names;
    const std::string prefix = path + "/";
    for (auto at = entries_.lower_bound(prefix);
         at != entries_.end() && at->first.starts_with(prefix); ++at)
        names.insert(
            at->first.substr(prefix.size(), at->first.find('/', prefix.size()) - prefix.size()));
    return std::vector<std::string>(names.begin(), names.end());
}

} // namespace cutroom::test
