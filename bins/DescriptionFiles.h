// The files of documents and asset groups: one JSON object each, under the container's cookie, in
// one folder of the open project. Which files were found damaged is remembered, so that none of
// them is ever written over.
#pragma once

#include "platform/base/Annotations.h"
#include "platform/base/Cookie.h"
#include "platform/base/Export.h"
#include "platform/base/Locks.h"
#include "platform/base/Status.h"
#include "platform/files/GroupCommit.h"
#include "platform/files/JsonElement.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cutroom {

// Any thread; a caller that reads and writes one file on two threads puts that in order.
class CUTROOM_API DescriptionFiles {
public:
    // The longest description in bytes; a longer one is neither read nor written.
    static constexpr std::uint64_t kMaxBytes = std::uint64_t{16} << 20;

    // What a description may hold at most: for everybody who reads one.
    static JSON::ReadOptions readOptions();

    // Takes one description; its failure makes the file a damaged one.
    using Reader = std::function<Status(const JSON::Element& description, const std::string& file)>;

    DescriptionFiles(std::string folder, std::string extension)
        : folder_(std::move(folder)), extension_(std::move(extension)) {}

    // "<folder>/<cookie>.<extension>", relative to the project.
    std::string name(const Cookie& id) const;
    // The cookies of the files that there are, in the order of the names. A file that is not named
    // by a cookie that `takes` accepts counts as damaged.
    Result<CookieVec> list(const std::function<bool(const Cookie&)>& takes);
    // Reads one file; what is wrong with it is logged and remembered.
    Status read(const Cookie& id, const Reader& reader);
    // Puts a new text for the file into a group below the project's folder. A damaged file is moved
    // aside at once.
    Status stage(GroupCommit& group, const Cookie& id, std::string_view text);
    // Forgets which files are damaged.
    void reset();
    // What is wrong with the damaged files, in the order of their names.
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
