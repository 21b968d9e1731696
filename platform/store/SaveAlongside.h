// `SaveAlongside`: other files of the project that stand or fall with the edits of one save, such
// as the bin into which new edits are filed.
#pragma once

#include "platform/base/Export.h"

#include <string>
#include <vector>

namespace cutroom {

// A file of the project: its name below the project's folder, and what is to stand in it.
struct FileInProject {
    std::string name;
    std::string content;
};

// While it lives, each save of edits on its thread writes these files in the same group: all or
// none. A save without edits writes none. Scopes nest; the innermost counts.
class CUTROOM_API SaveAlongside {
public:
    explicit SaveAlongside(std::vector<FileInProject> files);
    ~SaveAlongside();
    SaveAlongside(const SaveAlongside&) = delete;
    SaveAlongside& operator=(const SaveAlongside&) = delete;

    // The files of this thread's innermost scope; none without one.
    static const std::vector<FileInProject>& current() noexcept;

private:
    const std::vector<FileInProject> files_;
    const SaveAlongside* const outer_;
};

} // namespace cutroom
