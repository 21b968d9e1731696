#include "bench/limits/BinRecords.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <random>

namespace cutroom::bench {

namespace {

void require(bool done) {
    if (!done)
        std::abort();
}

} // namespace

std::vector<PlainItem> plainItems(std::size_t count, char type) {
    std::mt19937_64 random(1);
    std::vector<PlainItem> items(count);
    for (std::size_t i = 0; i < count; ++i) {
        PlainItem& item = items[i];
        item.asset = Cookie(type, random());
        item.time = static_cast<double>(random() % 100'000) / 25;
        if (i % 2 == 0) {
            item.markIn = item.time;
            item.markOut = item.time + static_cast<double>(random() % 1000) / 25;
        }
        item.x = static_cast<float>(i % 20) + (i % 4 == 0 ? 0.37f : 0);
        item.y = static_cast<float>(i / 20);
    }
    return items;
}

void savePacked(const std::vector<PlainItem>& items, const std::string& path) {
    std::vector<PackedItem> packed;
    packed.reserve(items.size());
    for (const PlainItem& item : items)
        packed.push_back({item.asset.id(), item.time, item.markIn, item.markOut, item.x, item.y,
                          item.asset.type()});
    const int file = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0666);
    const std::size_t size = packed.size() * sizeof(PackedItem);
    require(file >= 0 && ::write(file, packed.data(), size) == static_cast<ssize_t>(size));
    require(::fsync(file) == 0 && ::close(file) == 0);
}

std::vector<PlainItem> loadPacked(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY);
    struct stat info;
    require(file >= 0 && ::fstat(file, &info) == 0);
    std::vector<PackedItem> packed(static_cast<std::size_t>(info.st_size) / sizeof(PackedItem));
    require(::read(file, packed.data(), static_cast<std::size_t>(info.st_size)) == info.st_size);
    ::close(file);
    std::vector<PlainItem> items;
    items.reserve(packed.size());
    for (const PackedItem& from : packed)
        items.push_back({Cookie(from.type, from.id),
                         from.time,
                         from.markIn,
                         from.markOut,
                         from.x,
                         from.y,
                         false,
                         {}});
    return items;
}

} // namespace cutroom::bench
