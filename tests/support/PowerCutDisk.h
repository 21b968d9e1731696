// A file system in memory that knows what a power cut may take: content that was not flushed is
// lost, cut or zeroed, and entries of a folder that was not flushed come back up to any point.
#pragma once

#include "platform/host/FileSystem.h"

#include <map>
#include <random>
#include <string>
#include <vector>

namespace cutroom::test {

// Folders named by whoever writes to them are there. One thread at a time.
class PowerCutDisk : public iFileSystem {
public:
    PowerCutDisk() = default;
    PowerCutDisk(const PowerCutDisk&) = default;
    PowerCutDisk& operator=(const PowerCutDisk&) = default;

    // The disk as it may be found after the power was cut now. Each folder keeps some first part of
    // what happened to its entries since it was flushed, in order; folders are independent.
    PowerCutDisk afterCut(std::mt19937& random) const;
    // Everything written is on the disk, as after a shut-down.
    void settle();
    // Path to content of every file.
    std::map<std::string, std::string> files() const;

    Result<Handle> open(const std::string& path, OpenMode mode) override;
    Result<std::size_t> read(Handle file, char* buffer, std::size_t size) override;
    Result<std::size_t> write(Handle file, const char* data, std::size_t size) override;
    Status truncate(Handle file, std::uint64_t size) override;
    Status flush(Handle file) override;
    Status lock(Handle) override { return {}; }
    Status close(Handle file) override;
    Result<Handle> openFolder(const std::string& path) override;
    Status flushAll(Handle) override;
    Result<FileInfo> stat(const std::string& path) override;
    Status rename(const std::string& from, const std::string& to) override;
    Status remove(const std::string& path) override;
    Status link(const std::string& from, const std::string& to) override;
    Status makeFolder(const std::string& path) override;
    Result<std::vector<std::string>> list(const std::string& path) override;

private:
    struct Content {
        std::string now;
        std::string flushed;
    };
    // One change of entries: what a path stands for from then on (0: nothing).
    struct Change {
        std::vector<std::pair<std::string, int>> entries;
    };
    struct Open {
        std::string folder; // of an open folder
        int content = 0;    // of an open file
        std::size_t at = 0;
    };
    void change(Change change);
    static void apply(std::map<std::string, int>& entries, const Change& change);

    std::map<int, Content> contents_;
    std::map<std::string, int> entries_;
    std::map<std::string, int> flushedEntries_;
    std::vector<Change> pending_;
    std::map<Handle, Open> open_;
    int last_ = 0;
};

} // namespace cutroom::test
