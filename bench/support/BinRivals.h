// How others save and load a bin: as JSON through three libraries, as a table of SQLite.
#pragma once

#include "bench/limits/BinRecords.h"

#include <string>
#include <vector>

namespace cutroom::bench {

// One that saves a bin's items into a file, flushed to the disk, and loads them.
struct BinRival {
    const char* name;
    void (*save)(const std::vector<PlainItem>& items, const std::string& path); // null: none
    std::vector<PlainItem> (*load)(const std::string& path);
};

// Those whose packages are installed. A rival that cannot save loads what the one before it saved.
std::vector<BinRival> binRivals();

} // namespace cutroom::bench
