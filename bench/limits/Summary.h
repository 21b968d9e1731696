// The least work of listing bins without opening them: one flat file, read at once, whose entries
// become the same map of summaries; of asking when each bin's file was written; and of finding out
// anew: opening and reading each.
#pragma once

#include "bins/BinSummary.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace cutroom::bench {

inline std::string plainRead(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes(std::filesystem::file_size(path), '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

// An entry: two ids, the numbers, and the length of the name in wide characters, which follow.
struct PlainSummary {
    std::uint64_t id = 0;
    std::uint64_t child = 0;
    std::uint32_t modTime = 0;
    std::uint32_t created = 0;
    std::int32_t logCount = 0;
    std::uint32_t nameLength = 0;
};

inline void plainWrite(const std::string& path, const BinSummaries& summaries) {
    std::ofstream file(path, std::ios::binary);
    for (const auto& [id, summary] : summaries) {
        const PlainSummary entry{id.id(),          summary.children.front().id(),
                                 summary.modTime,  summary.created,
                                 summary.logCount, static_cast<std::uint32_t>(summary.name.size())};
        file.write(reinterpret_cast<const char*>(&entry), sizeof entry);
        file.write(reinterpret_cast<const char*>(summary.name.data()),
                   static_cast<std::streamsize>(summary.name.size() * sizeof(wchar_t)));
    }
}

inline BinSummaries plainSummaries(const std::string& path) {
    const std::string bytes = plainRead(path);
    BinSummaries summaries;
    for (std::size_t at = 0; at < bytes.size();) {
        PlainSummary entry;
        std::memcpy(&entry, bytes.data() + at, sizeof entry);
        at += sizeof entry;
        BinSummary summary;
        summary.id = Cookie('G', entry.id);
        summary.name.resize(entry.nameLength);
        std::memcpy(summary.name.data(), bytes.data() + at, entry.nameLength * sizeof(wchar_t));
        at += entry.nameLength * sizeof(wchar_t);
        summary.modTime = entry.modTime;
        summary.created = entry.created;
        summary.logCount = entry.logCount;
        summary.children = {Cookie('G', entry.child)};
        summaries.emplace_hint(summaries.end(), summary.id, std::move(summary));
    }
    return summaries;
}

// When each bin's file was written.
inline std::vector<std::filesystem::file_time_type> plainLook(const std::string& folder) {
    std::vector<std::filesystem::file_time_type> times;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".bin")
            times.push_back(entry.last_write_time());
    return times;
}

// Opens and reads every file; gives the bytes read.
inline std::size_t plainReadAll(const std::vector<std::string>& paths) {
    std::size_t bytes = 0;
    for (const std::string& path : paths)
        bytes += plainRead(path).size();
    return bytes;
}

} // namespace cutroom::bench
