#include "platform/store/SaveAlongside.h"

#include <utility>

namespace cutroom {

namespace {

thread_local constinit const SaveAlongside* innermost = nullptr;

} // namespace

SaveAlongside::SaveAlongside(std::vector<FileInProject> files)
    : files_(std::move(files)), outer_(std::exchange(innermost, this)) {}

SaveAlongside::~SaveAlongside() { innermost = outer_; }

const std::vector<FileInProject>& SaveAlongside::current() noexcept {
    static const auto& none = *new std::vector<FileInProject>; // never destroyed
    return innermost ? innermost->files_ : none;
}

} // namespace cutroom
