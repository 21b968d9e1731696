// `cutroom::TextArena`: the lower-cased texts of all records in one piece of memory, so that free
// text is found by one scan.
//
//     field 0 field 0 ... field 0 0 | field 0 0 | ...    each field and each record ends in a null
//     record of slot 7              | slot 3    |
//
// A changed record is put at the end again; what it leaves behind is squeezed out from time to
// time.
#pragma once

#include "platform/project/ProjDbRecord.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// One thread at a time.
class TextArena {
public:
    using Slot = std::uint32_t;

    // Sets the texts of a slot.
    void put(Slot slot, const projdb::Record& record);
    void remove(Slot slot);
    void clear();

    // The slots with a field that holds the lower-cased `pattern`, in ascending order; with
    // `wholeWords` the first place in each field decides, as `compareFolded` has it.
    std::vector<Slot> search(std::string_view pattern, bool wholeWords) const;

private:
    struct Start {
        std::size_t offset;
        Slot slot;
    };
    static constexpr std::size_t kNowhere = ~std::size_t{0};

    std::size_t endOf(std::size_t start) const noexcept;
    std::size_t startHolding(std::size_t offset, std::size_t from) const noexcept;
    bool isLive(const Start& start) const noexcept { return offsets_[start.slot] == start.offset; }
    void addField(std::string_view text);
    void squeeze();

    std::string text_;
    std::vector<Start> starts_;        // ascending; those that a later one replaced too
    std::vector<std::size_t> offsets_; // by slot: where its texts begin, or kNowhere
    std::size_t deadBytes_ = 0;
};

} // namespace cutroom
