// `cutroom::Lifeline`: tells whether an object has survived calls that may destroy it.
//
// For synchronisers and their heirs. One thread.
#pragma once

#include "platform/base/Export.h"

namespace cutroom {

// A member of the object that may go.
class CUTROOM_API Lifeline {
public:
    // Lives on the stack while others are called.
    class CUTROOM_API Watch {
    public:
        explicit Watch(Lifeline& line) noexcept;
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

        bool alive() const noexcept { return line_ != nullptr; }

    private:
        friend class Lifeline;
        Lifeline* line_; // null when the object has gone
        Watch* const outer_;
    };

    Lifeline() = default;
    Lifeline(const Lifeline&) = delete;
    Lifeline& operator=(const Lifeline&) = delete;
    ~Lifeline();

private:
    Watch* innermost_ = nullptr;
};

} // namespace cutroom
