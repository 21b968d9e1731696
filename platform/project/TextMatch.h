// The one text comparison of every search.
#pragma once

#include <cstddef>
#include <string_view>

namespace cutroom {

// Tells whether `pattern` occurs in `text` (both UTF-8). Without `caseSensitive` both are
// lower-cased first. With `wholeWords` the first occurrence alone decides, and a later one is not
// tried: the character before it, if any, and the one after it, if any, must be punctuation or
// white space. The empty pattern occurs in everything.
bool compareText(std::string_view text, std::string_view pattern, bool wholeWords,
                 bool caseSensitive);

// The same for two texts that are both lower-cased already (or to be compared as they stand).
bool compareFolded(std::string_view text, std::string_view pattern, bool wholeWords);

// Tells whether [start, end) of `text` has no letter or digit touching it: the word rule above.
bool standsAlone(std::string_view text, std::size_t start, std::size_t end);

// Position of the first `pattern` at or after `from`, or npos; looks for the pattern's rarest byte.
std::size_t findText(std::string_view text, std::string_view pattern,
                     std::size_t from = 0) noexcept;

} // namespace cutroom
