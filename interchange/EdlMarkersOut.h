// Markers as the comments of an edit list.
#pragma once

#include "interchange/Timeline.h"

#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// `text` on one line, without the control characters that would end it.
std::string edlOneLine(std::string_view text);

// Makes the comments, without asterisk, and counts what they cannot say.
class EdlMarkersOut {
public:
    // Those of a timeline that are written as LOC comments, by time; and those that came in a table
    // at the end of a list and go back to one, in the order of their numbers there.
    static std::vector<const Marker*> locators(const Timeline& timeline);
    static std::vector<const Marker*> rows(const Timeline& timeline);

    // "LOC: 01:00:01:14 RED     text".
    std::string locator(const Marker& marker, const std::string& timecode);
    // "    10  WHITE  USER  01:06:00:01  V1  text".
    std::string row(const Marker& marker, const std::string& timecode);

    long lasting() const noexcept { return lasting_; } // written as points
    long colours() const noexcept { return colours_; } // written as the nearest known
    long fields() const noexcept { return fields_; }   // left out

private:
    std::string colourOf(const Marker& marker, const std::string& text);
    static std::string trackOf(const Marker& marker);

    unsigned long long rows_ = 0;
    long lasting_ = 0;
    long colours_ = 0;
    long fields_ = 0;
};

} // namespace cutroom
