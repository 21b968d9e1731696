// Reads tables of separated values after RFC 4180, as spreadsheets and editors write them.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/Status.h"

#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

struct CsvRow {
    long line = 0; // where it begins
    std::vector<std::string> cells;
};

// The rows of `text`, the first one (a header) included; rows without any text are left out. The
// separator is the one of comma, semicolon and tab that the first line has most of. Line ends of
// any kind. `file` is for the failure: `damaged`, with the line, for a quote that is never closed,
// text behind a closing quote, and text that is not UTF-8.
CUTROOM_API Result<std::vector<CsvRow>> readCsv(std::string_view text, const std::string& file);

} // namespace cutroom
