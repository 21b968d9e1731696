// The files of documents and asset groups: one JSON object each, under the container's cookie, in
// one folder of the open project. Which files were found damaged is remembered, so that none of
// them is ever written over.
#pragma once

#include "platform/base/Annotations.h"
#include "platform/base/Cookie.h"
#include "platform/base/Locks.h"
#include "platform/base/Status.h"
#include "platform/files/JsonElement.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace cutroom {

// Used by one thread at a time, save for `damaged`.
class DescriptionFiles {
public:
    // The longest description in bytes.
    static constexpr std::uint64_t kMaxBytes = std::uint64_t{16} << 20;

    // A file to be replaced by `text`, or to be removed.
    struct Change {
        Cookie id;
        std::optional<std::string> text;
    };
    // Takes one description; its failure makes the file a damaged one.
    using Reader = std::function<Status(const JSON::Element& description, const std::string& file)>;

    DescriptionFiles(std::string folder, std::string extension)
        : folder_(std::move(folder)), extension_(std::move(extension)) {}

    // "<folder>/<cookie>.<extension>", relative to the project.
    std::string name(const Cookie& id) const;
    // The cookies of the files that there are, in the order of the cookies. A file whose name is no
    // cookie, or one that `takes` refuses, is damaged.
    Result<std::vector<Cookie>> list(const std::function<bool(const Cookie&)>& takes);
    // Reads one file; what is wrong with it is logged and remembered.
    Status read(const Cookie& id, const Reader& reader);
    // Makes the changes, and removes the files `others` (relative to the project) with them: all or
    // none. Damaged files that are to be replaced are moved aside first.
    Status write(const std::vector<Change>& changes, const std::vector<std::string>& others = {});
    // Forgets which files are damaged.
    void reset();
    // What is wrong with the damaged files, in the order of their names. Any thread.
    std::vector<Status> damaged() const;

private:
    void noteDamage(const std::string& name, const Status& status);
    Status setAside(const std::string& name);

    const std::string folder_;
    const std::string extension_;
    mutable CriticalSection lock_{LockRank::leaf};
    std::map<std::string, Status> damaged_ CUTROOM_GUARDED_BY(lock_); // by name
};

} // namespace cutroom
