// A file system in memory that knows what a power cut may take: content that was not flushed is
// lost, cut or zeroed, and entries of a folder that was not flushed come back up to any point.
#pragma once

#include "platform/files/Files.h"
#include "platform/host/FileSystem.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace cutroom::test {

// A folder exists as soon as a path names it. One thread at a time.
class PowerCutDisk : public iFileSystem {
public:
    PowerCutDisk() = default;
    PowerCutDisk(const PowerCutDisk&) = default;
    PowerCutDisk& operator=(const PowerCutDisk&) = default;

    // The disk as it may be found after the power was cut now. Each folder keeps some first part of
    // what happened to its entries since it was flushed, in order; folders are independent.
    PowerCutDisk afterCut(std::mt19937& random) const {
        PowerCutDisk found = *this;
        found.open_.clear();
        found.pending_.clear();
        found.entries_ = flushedEntries_;
        std::map<std::string, std::size_t> kept; // changes that each folder keeps
        for (const Change& one : pending_)
            ++kept[one.folder()];
        for (auto& [folder, changes] : kept)
            changes = random() % (changes + 1);
        for (const Change& one : pending_)
            if (std::size_t& left = kept[one.folder()]; left > 0) {
                --left;
                one.applyTo(found.entries_);
            }
        found.flushedEntries_ = found.entries_;
        for (auto& [number, content] : found.contents_)
            content.flushed = content.now = torn(content, random);
        return found;
    }
    // Puts all that was written on the disk, as a shut-down does.
    void settle() {
        pending_.clear();
        flushedEntries_ = entries_;
        for (auto& [number, content] : contents_)
            content.flushed = content.now;
    }
    // Path to content of every file.
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all;
        for (const auto& [path, content] : entries_)
            all[path] = contents_.at(content).now;
        return all;
    }

    Result<Handle> open(const std::string& path, OpenMode mode) override {
        const auto at = entries_.find(path);
        if (at == entries_.end() && mode == OpenMode::read)
            return missing(path);
        if (at != entries_.end() && mode == OpenMode::createNew)
            return taken(path);
        const int content = at != entries_.end() ? at->second : ++last_;
        if (at == entries_.end()) {
            contents_[content] = {};
            change({{{path, content}}});
        }
        open_[++last_] = {{}, content, 0};
        return last_;
    }
    Result<Handle> openFolder(const std::string& path) override {
        open_[++last_] = {path, 0, 0};
        return last_;
    }
    Result<std::size_t> read(Handle file, char* buffer, std::size_t size) override {
        Open& open = open_.at(file);
        const std::string& now = contents_.at(open.content).now;
        const std::size_t got = now.copy(buffer, size, std::min(open.at, now.size()));
        open.at += got;
        return got;
    }
    Result<std::size_t> write(Handle file, const char* data, std::size_t size) override {
        Open& open = open_.at(file);
        std::string& now = contents_.at(open.content).now;
        now.resize(std::max(now.size(), open.at + size));
        now.replace(open.at, size, data, size);
        open.at += size;
        return size;
    }
    Status truncate(Handle file, std::uint64_t size) override {
        Open& open = open_.at(file);
        open.at = static_cast<std::size_t>(size);
        contents_.at(open.content).now.resize(open.at);
        return {};
    }
    // A flush of a folder keeps what happened to its own entries only.
    Status flush(Handle file) override {
        const Open& open = open_.at(file);
        if (open.folder.empty()) {
            Content& content = contents_.at(open.content);
            content.flushed = content.now;
            return {};
        }
        std::erase_if(pending_, [&](const Change& one) {
            const bool own = one.folder() == open.folder;
            if (own)
                one.applyTo(flushedEntries_);
            return own;
        });
        return {};
    }
    Status lock(Handle) override { return {}; }
    Status close(Handle file) override {
        open_.erase(file);
        return {};
    }
    Status flushAll(Handle) override {
        settle();
        return {};
    }
    Result<FileInfo> stat(const std::string& path) override {
        if (const auto at = entries_.find(path); at != entries_.end())
            return infoOf(at->second);
        const auto below = entries_.lower_bound(path + "/");
        if (below != entries_.end() && below->first.starts_with(path + "/"))
            return FileInfo{true, 0, 0, 0};
        return missing(path);
    }
    Result<FileInfo> stat(Handle file) override {
        const Open& open = open_.at(file);
        return open.folder.empty() ? infoOf(open.content) : FileInfo{true, 0, 0, 0};
    }
    Status rename(const std::string& from, const std::string& to) override {
        const auto at = entries_.find(from), there = entries_.find(to);
        if (at == entries_.end())
            return missing(from);
        if (there == entries_.end() || there->second != at->second)
            change({{{to, at->second}, {from, 0}}});
        return {};
    }
    Status remove(const std::string& path) override {
        if (!entries_.contains(path))
            return missing(path);
        change({{{path, 0}}});
        return {};
    }
    Status link(const std::string& from, const std::string& to) override {
        const auto at = entries_.find(from);
        if (at == entries_.end())
            return missing(from);
        if (entries_.contains(to))
            return taken(to);
        change({{{to, at->second}}});
        return {};
    }
    Status makeFolder(const std::string&) override { return {}; }
    Result<std::vector<std::string>> list(const std::string& path) override {
        std::set<std::string> names;
        const std::string folder = path + "/";
        for (auto at = entries_.lower_bound(folder);
             at != entries_.end() && at->first.starts_with(folder); ++at)
            names.insert(at->first.substr(folder.size(),
                                          at->first.find('/', folder.size()) - folder.size()));
        return std::vector<std::string>(names.begin(), names.end());
    }

private:
    using Entries = std::map<std::string, int>; // what each path stands for
    struct Content {
        std::string now;
        std::string flushed;
    };
    // One change of entries of a folder: what a path stands for from then on (0: nothing).
    struct Change {
        std::vector<std::pair<std::string, int>> entries;

        std::string folder() const { return folderOf(entries.front().first); }
        void applyTo(Entries& all) const {
            for (const auto& [path, content] : entries) {
                if (content)
                    all[path] = content;
                else
                    all.erase(path);
            }
        }
    };
    struct Open {
        std::string folder; // of an open folder
        int content = 0;    // of an open file
        std::size_t at = 0;
    };

    FileInfo infoOf(int content) const {
        return {false, contents_.at(content).now.size(), 0, static_cast<std::uint64_t>(content)};
    }
    static Status missing(const std::string& path) {
        return {StatusCode::notFound, path, "No such file or directory"};
    }
    static Status taken(const std::string& path) {
        return {StatusCode::inputOutput, path, "File exists"};
    }
    // What may be left of content that was not flushed.
    static std::string torn(const Content& content, std::mt19937& random) {
        const std::string& now = content.now;
        if (now == content.flushed)
            return now;
        const std::size_t cut = random() % (now.size() + 1);
        switch (random() % 5) {
        case 0:
            return content.flushed;
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
    void change(Change change) {
        change.applyTo(entries_);
        pending_.push_back(std::move(change));
    }

    std::map<int, Content> contents_;
    Entries entries_;
    Entries flushedEntries_;
    std::vector<Change> pending_;
    std::map<Handle, Open> open_;
    int last_ = 0;
};

} // namespace cutroom::test
