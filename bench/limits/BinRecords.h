// The least work of saving, loading and searching a bin: records of fixed size, written and read
// as they are, each made into an item with what an item must hold; a vector and a hash set.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Time.h"

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

namespace cutroom::bench {

// An item in memory.
struct PlainItem {
    Cookie asset;
    double time = 0;
    double markIn = kNoTime;
    double markOut = kNoTime;
    float x = -1;
    float y = -1;
    bool tagged = false;
    std::string vobId;
};

// One on the disk.
struct PackedItem {
    std::uint64_t id;
    double time, markIn, markOut;
    float x, y;
    char type;
};

// `count` different assets of kind `type` in no order, half of them with marks, at places and times
// as a gallery and frames have them.
std::vector<PlainItem> plainItems(std::size_t count, char type);
// Writes the records and flushes them to the disk.
void savePacked(const std::vector<PlainItem>& items, const std::string& path);
std::vector<PlainItem> loadPacked(const std::string& path);

// A list in order, and a set that tells what it holds.
struct PlainBin {
    std::vector<PlainItem> items;
    std::unordered_set<Cookie> held;

    void add(const std::vector<Cookie>& assets) {
        for (const Cookie& asset : assets)
            if (held.insert(asset).second)
                items.emplace_back().asset = asset;
    }
};

} // namespace cutroom::bench
