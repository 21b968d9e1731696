// What a text must be to stand in a subtitle file, whose readers take an empty line for the end of
// a subtitle and a time line, wherever it stands, for the beginning of one.
#pragma once

#include <string>
#include <string_view>

namespace cutroom {

// Makes one line of a text; used for one after the other.
class SubtitleLine {
public:
    // `text` with every run of line breaks and control characters as one blank; empty when nothing
    // but blanks is left. Good until the next call, and as long as `text`.
    std::wstring_view of(std::wstring_view text);
    // The same of `otherwise` where `text` leaves nothing.
    std::wstring_view of(std::wstring_view text, std::wstring_view otherwise);

private:
    std::wstring cleaned_;
};

// The words that fill half of the text's length as `first`, all others as `second`, each joined by
// single blanks. False, and nothing is done, for fewer than two words.
bool splitInHalf(std::wstring_view text, std::wstring& first, std::wstring& second);

// The text with every arrow ("-->" and longer) as "->".
std::wstring withShortArrows(std::wstring_view text);

// The line, or where readers would take it for times ("1:2:3 --> ...") one made in `scratch` that
// does not look like it.
std::wstring_view withoutTimes(std::wstring_view line, std::wstring& scratch);

} // namespace cutroom
