#include "sync/Lifeline.h"

namespace cutroom {

Lifeline::Watch::Watch(Lifeline& line) noexcept : line_(&line), outer_(line.innermost_) {
    line.innermost_ = this;
}

Lifeline::Watch::~Watch() {
    if (line_)
        line_->innermost_ = outer_;
}

Lifeline::~Lifeline() {
    for (Watch* watch = innermost_; watch; watch = watch->outer_)
        watch->line_ = nullptr;
}

} // namespace cutroom
