// Writes tables of comma-separated values after RFC 4180, in UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace cutroom {

// Rows end in CRLF; a cell with a comma, a quote or a line break stands in quotes. Control
// characters that a text file cannot hold become U+FFFD.
class CsvBuilder {
public:
    // `guarded` puts an apostrophe before text that a spreadsheet would run as a formula (one that
    // begins with = + - @ or a tab and is no number).
    enum class Cells { exact, guarded };
    explicit CsvBuilder(Cells cells = Cells::exact) : cells_(cells) {}

    void add(std::string_view utf8);
    void add(std::wstring_view text);
    void endRow();

    std::string take() { return std::move(text_); }

private:
    const Cells cells_;
    bool rowBegun_ = false;
    std::string text_;
};

} // namespace cutroom
