// `EditHistory`: the steps to which an edit can go back and forth. Internal to the store.
#pragma once

#include "platform/store/EditState.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cutroom {

// Steps before `position` can be undone, those from it on redone. Each holds the state that is not
// the edit's present one: undo and redo exchange the two.
//
//   steps:     [0] [1] | [2]          position 2: undo goes to [1], redo to [2]
struct EditHistory {
    struct Step {
        std::string description;
        std::uint32_t when = 0; // seconds since 1970
        EditState state;
    };

    std::vector<Step> steps;
    std::size_t position = 0;
    std::uint64_t fileId = 0; // ties the edit's file to its history's; 0: no history file
    bool loaded = true;       // false: what lies on disk has not been read yet
    bool damaged = false;     // what lies on disk cannot be read, and is not written over
    std::uint64_t edits = 0;  // counts changes of the history
    std::uint64_t saved = 0;  // `edits` as of the history's file
    std::uint64_t lastBackupAt = ~std::uint64_t{0}; // the edit's change count at the last step

    // What the newest step did away with, until it is taken back.
    struct Former {
        std::uint64_t edits = 0;
        std::vector<Step> undone;               // could be redone
        std::optional<Step> oldest;             // beyond the limit
        std::optional<std::string> description; // the step's own, where it was only given another
    };
    std::optional<Former> former;

    // Puts in a step; what could be redone goes, and the oldest beyond the limit.
    void push(Step step, std::size_t limit) {
        const auto here = steps.begin() + static_cast<std::ptrdiff_t>(position);
        former = {edits, {std::move_iterator(here), std::move_iterator(steps.end())}, {}, {}};
        steps.erase(here, steps.end());
        steps.push_back(std::move(step));
        if (steps.size() > limit) {
            former->oldest = std::move(steps.front());
            steps.erase(steps.begin());
        }
        position = steps.size();
        ++edits;
    }
    // Gives the newest step another description.
    void rename(const std::string& description) {
        former = {edits, {}, {}, steps.back().description};
        edits += steps.back().description != description;
        steps.back().description = description;
    }
    // Undoes the last `push` or `rename`, which `former` is of.
    void takeBack() {
        if (former->description) {
            steps.back().description = *former->description;
        } else {
            steps.pop_back();
            if (former->oldest)
                steps.insert(steps.begin(), std::move(*former->oldest));
            position = steps.size();
            std::move(former->undone.begin(), former->undone.end(), std::back_inserter(steps));
            lastBackupAt = ~std::uint64_t{0};
        }
        edits = saved == edits ? edits + 1 : former->edits; // a file may have it already
        former.reset();
    }
    bool canUndo() const noexcept { return position > 0; }
    bool canRedo() const noexcept { return position < steps.size(); }
};

} // namespace cutroom
