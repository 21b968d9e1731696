// Disks whose operations fail, as the file system in use.
#pragma once

#include "platform/files/GroupCommit.h"
#include "tests/support/FaultyFiles.h"
#include "tests/support/PowerCutDisk.h"

#include <map>
#include <string>
#include <vector>

namespace cutroom::test {

using FileMap = std::map<std::string, std::string>;

// The file system in use for its own lifetime.
class Installed {
public:
    explicit Installed(iFileSystem& files) : before_(installFileSystem(&files)) {}
    ~Installed() { installFileSystem(before_); }
    Installed(const Installed&) = delete;
    Installed& operator=(const Installed&) = delete;

private:
    iFileSystem* before_;
};

// A disk with old contents, in use under operations that may fail.
struct Bench {
    explicit Bench(const FileMap& old) {
        for (const auto& [path, content] : old) {
            const auto file = disk.open(path, OpenMode::createNew);
            (void)disk.write(*file, content.data(), content.size());
            (void)disk.close(*file);
        }
    }

    PowerCutDisk disk;
    FaultyFiles faulty{disk};
    const Installed installed{faulty};
};

inline FileMap withoutBackups(const PowerCutDisk& disk) {
    FileMap files = disk.files();
    std::erase_if(files, [](const auto& file) { return file.first.ends_with(".bak"); });
    return files;
}

// Writes (or, without content, removes) files below /p as one group.
using Group = std::vector<std::pair<std::string, const char*>>;
inline Status commit(const Group& changes) {
    GroupCommit group("/p");
    for (const auto& [path, content] : changes)
        if (Status staged = content ? group.write(path, content) : group.remove(path); !staged)
            return staged;
    return group.commit();
}

// The disk after a group was decided, with nothing of it in place yet.
inline PowerCutDisk decided(const FileMap& old, const Group& changes) {
    for (long at = 0;; ++at) {
        Bench bench(old);
        bench.faulty.arm(at, FaultyFiles::Span::allForEver);
        (void)commit(changes);
        if (bench.disk.files().contains("/p/commit.manifest"))
            return bench.disk;
    }
}

} // namespace cutroom::test
