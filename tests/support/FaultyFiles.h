// A file system on top of another one, of which chosen operations fail.
#pragma once

#include "platform/host/FileSystem.h"

#include <algorithm>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
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
    void arm(long at, Span span, std::string message = "No space left on device") {
        at_ = at;
        span_ = span;
        message_ = std::move(message);
        struck_ = false;
        operations_.clear();
    }
    void disarm() { at_ = -1; }
    // Writes do at most `bytes` at a time (0: all).
    void writeShort(std::size_t bytes) { most_ = bytes; }
    // Tells whether the armed operation was reached.
    bool struck() const { return struck_; }
    // Operations since `arm` or construction, in order ("flush", "rename /a/b").
    const std::vector<std::string>& operations() const { return operations_; }
    long count(const std::string& kind) const {
        return std::count_if(operations_.begin(), operations_.end(), [&](const std::string& one) {
            return one.substr(0, one.find(' ')) == kind;
        });
    }
    std::size_t openHandles() const { return open_.size(); }

    Result<Handle> open(const std::string& path, OpenMode mode) override {
        return opened(mode == OpenMode::read ? "open" : "create", path,
                      [&] { return below_.open(path, mode); });
    }
    Result<Handle> openFolder(const std::string& path) override {
        return opened("openFolder", path, [&] { return below_.openFolder(path); });
    }
    Result<std::size_t> read(Handle file, char* buffer, std::size_t size) override {
        return tried("read", {}, [&] { return below_.read(file, buffer, size); });
    }
    Result<std::size_t> write(Handle file, const char* data, std::size_t size) override {
        Status bad = strike("write", {});
        if (bad.ok())
            return below_.write(file, data, most_ ? std::min(most_, size) : size);
        if (span_ == Span::allForEver) // the process ended in the middle
            (void)below_.write(file, data, size / 2);
        return bad;
    }
    Status truncate(Handle file, std::uint64_t size) override {
        return tried("truncate", {}, [&] { return below_.truncate(file, size); });
    }
    Status flush(Handle file) override {
        return tried("flush", {}, [&] { return below_.flush(file); });
    }
    Status lock(Handle file) override {
        return tried("lock", {}, [&] { return below_.lock(file); });
    }
    Status close(Handle file) override {
        Status bad = strike("close", {});
        open_.erase(file);
        Status closed = below_.close(file);
        return bad.ok() ? closed : bad;
    }
    Status flushAll(Handle folder) override {
        return tried("flushAll", {}, [&] { return below_.flushAll(folder); });
    }
    Result<FileInfo> stat(const std::string& path) override {
        return tried("stat", path, [&] { return below_.stat(path); });
    }
    Result<FileInfo> stat(Handle file) override {
        return tried("stat", {}, [&] { return below_.stat(file); });
    }
    Status rename(const std::string& from, const std::string& to) override {
        return tried("rename", to, [&] { return below_.rename(from, to); });
    }
    Status remove(const std::string& path) override {
        return tried("remove", path, [&] { return below_.remove(path); });
    }
    Status link(const std::string& from, const std::string& to) override {
        return tried("link", to, [&] { return below_.link(from, to); });
    }
    Status makeFolder(const std::string& path) override {
        return tried("makeFolder", path, [&] { return below_.makeFolder(path); });
    }
    Result<std::vector<std::string>> list(const std::string& path) override {
        return tried("list", path, [&] { return below_.list(path); });
    }

private:
    Status strike(const std::string& kind, const std::string& path) {
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
    template <class Do>
    std::invoke_result_t<const Do&> tried(const char* kind, const std::string& path,
                                          const Do& act) {
        Status bad = strike(kind, path);
        return bad.ok() ? act() : bad;
    }
    template <class Do> Result<Handle> opened(const char* kind, const std::string& path, Do act) {
        const Result<Handle> handle = tried(kind, path, act);
        if (handle)
            open_.insert(*handle);
        return handle;
    }

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
