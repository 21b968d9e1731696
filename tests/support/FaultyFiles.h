// A file system on top of another one, of which chosen operations fail.
#pragma once

#include "platform/host/FileSystem.h"

#include <set>
#include <string>
#include <vector>

namespace cutroom::test {

// Counts every operation; the one that is armed fails without being done (a write may do half its
// bytes first, a close always closes). One thread at a time.
class FaultyFiles : public iFileSystem {
public:
    enum class Span {
        once,        // that one operation
        sameForEver, // and every later one of its kind
        allForEver,  // and every later one: the process is gone
    };

    explicit FaultyFiles(iFileSystem& below) : below_(below) {}

    // Lets operation number `at` (from 0, counted anew) fail with `message`.
    void arm(long at, Span span, std::string message = "No space left on device");
    void disarm() { at_ = -1; }
    // Writes do at most `bytes` at a time (0: all).
    void writeShort(std::size_t bytes) { most_ = bytes; }
    // Tells whether the armed operation was reached.
    bool struck() const { return struck_; }
    // Operations since `arm` or construction, in order ("flush", "rename /a/b").
    const std::vector<std::string>& operations() const { return operations_; }
    long count(const std::string& kind) const;
    std::size_t openHandles() const { return open_.size(); }

    Result<Handle> open(const std::string& path, OpenMode mode) override;
    Result<std::size_t> read(Handle file, char* buffer, std::size_t size) override;
    Result<std::size_t> write(Handle file, const char* data, std::size_t size) override;
    Status truncate(Handle file, std::uint64_t size) override;
    Status flush(Handle file) override;
    Status lock(Handle file) override;
    Status close(Handle file) override;
    Result<Handle> openFolder(const std::string& path) override;
    Status flushAll(Handle folder) override;
    Result<FileInfo> stat(const std::string& path) override;
    Status rename(const std::string& from, const std::string& to) override;
    Status remove(const std::string& path) override;
    Status link(const std::string& from, const std::string& to) override;
    Status makeFolder(const std::string& path) override;
    Result<std::vector<std::string>> list(const std::string& path) override;

private:
    Status strike(const std::string& kind, const std::string& path = {});

    iFileSystem& below_;
    std::vector<std::string> operations_;
    std::set<Handle> open_;
    std::string message_;
    std::string struckKind_;
    Span span_ = Span::once;
    long at_ = -1;
    bool struck_ = false;
    std::size_t most_ = 0;
};

} // namespace cutroom::test
