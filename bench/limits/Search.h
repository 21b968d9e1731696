// The least work of a search: the texts of all records one behind the other, looked through in
// blocks of a vector register, with case folded while comparing; each record found becomes an item.
#pragma once

#include "bench/limits/BinRecords.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom::bench {

// A record as it is made for all contestants: a name, a scene and a note, about 200 bytes.
struct SearchedRecord {
    Cookie cookie;
    std::string name, scene, note;
};

// `count` records of mixed words. Of a million 10 hold "zebrafinch", 2,500 "Kingfisher", 100,000
// "Harbour"; none holds "quagga".
std::vector<SearchedRecord> searchedRecords(std::size_t count);

// The texts as they are, each field ended by a null.
class PlainTexts {
public:
    explicit PlainTexts(const std::vector<SearchedRecord>& records);

    // An item for each record that holds the lower-case `pattern` (ASCII), at its first place in
    // some field as a whole word if so asked.
    std::vector<PlainItem> search(std::string_view pattern, bool wholeWords) const;
    const std::string& text() const noexcept { return text_; }

private:
    std::size_t find(std::string_view pattern, std::size_t from) const;

    std::string text_;
    std::vector<std::size_t> starts_;
    std::vector<Cookie> cookies_;
};

} // namespace cutroom::bench
