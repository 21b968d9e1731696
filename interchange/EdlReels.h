// The reel column of an edit list: eight characters of A-Z, 0-9 and _, as the strict form has it.
#pragma once

#include "interchange/Timeline.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace cutroom {

// Gives each source of a list a reel of its own. The same sources in the same order get the same
// reels.
class EdlReels {
public:
    // The reel for what `item` plays: the one of the list that it was read from, else its own reel,
    // else its file or name, shortened. "AX" for an item of an edit list that had none.
    const std::string& reelOf(const Item& item);
    // Tells whether the reel of `item` had to be changed, so that a comment must give the source's
    // own in full.
    bool isShort(const Item& item);
    std::size_t shortened() const noexcept { return shortened_; }

    // The strict form of a reel that was written, not made unique: for a clip that is in no event.
    static std::string strictForm(std::string_view reel);

private:
    std::string makeUnique(std::string reel);

    std::unordered_map<std::string, std::string> bySource_;
    std::unordered_set<std::string> taken_{"AX", "BL"};
    std::size_t shortened_ = 0;
};

} // namespace cutroom
