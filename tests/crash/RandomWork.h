// Random work on edits, as a user might do it: one step of history for each change.
#pragma once

#include "platform/base/Status.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <random>

namespace cutroom::test {

class RandomWork {
public:
    explicit RandomWork(unsigned seed) : random_(seed) {}

    // Cuts, markers, names and settings with a step of history each; now and then undo or redo.
    Status change(const EditPtr& edit);
    // 0 to `below` - 1.
    int number(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

private:
    Status cut(const EditPtr& edit);
    Status mark(const EditPtr& edit);

    std::mt19937 random_;
};

} // namespace cutroom::test
