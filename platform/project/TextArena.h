// `cutroom::TextArena`: the lower-cased texts of all records in one piece of memory, so that free
// text is found by one scan.
//
//     field 0 field 0 ... field 0 0 | field 0 0 | ...    each field and each record ends in a null
//     record of slot 7              | slot 3    |
//
// A changed record is put at the end again; what it leaves behind is squeezed out from time to
// time. A null inside a text is held as the byte 0xFF, which no text has.
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

    // Where a search goes on. It is only good while `generation` stays.
    using Place = std::size_t;
    // Searches the records from `place` on, about `bytes` of text, and moves the place behind them:
    // appends the slots with a field that holds the lower-cased `pattern` in the order of the
    // texts. With `wholeWords` the first place in each field decides, as `compareFolded` has it.
    void search(std::string_view pattern, bool wholeWords, Place& place, std::size_t bytes,
                std::vector<Slot>& found) const;
    bool isEnd(Place place) const noexcept { return place >= starts_.size(); }
    // Changes when records have moved otherwise than to the end.
    std::uint64_t generation() const noexcept { return generation_; }
    // The texts, those that wait to be squeezed out too.
    std::size_t bytes() const noexcept { return text_.size(); }

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
    bool standsInField(std::size_t at, std::size_t size, std::size_t& fieldEnd) const;

    std::string text_;
    std::vector<Start> starts_;        // ascending; those that a later one replaced too
    std::vector<std::size_t> offsets_; // by slot: where its texts begin, or kNowhere
    std::size_t deadBytes_ = 0;
    std::uint64_t generation_ = 0;
};

} // namespace cutroom
