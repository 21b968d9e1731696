// What a decided group consists of, as written to disk. Internal to this folder.
#pragma once

#include "platform/files/Files.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom::staging {

// The manifest's name in the group's root folder.
inline constexpr std::string_view kManifestName = "commit.manifest";

// One file of a group. All names are relative to the root.
struct Change {
    std::string path;
    std::string temporary; // the staged content; empty for a removal
    std::string old;       // second name of the content before; empty when there was none
    std::uint64_t size = 0;
    std::uint32_t crc = 0;
};

std::string manifestBytes(const std::vector<Change>& changes);
// Refuses names that lead out of the root or are not of the kind they should be.
Result<std::vector<Change>> readManifest(const std::string& path);
// A path that stays below the folder it is relative to.
bool isInside(std::string_view path) noexcept;

// Puts the changes of a decided group in place. Every step may be found done already, by this or an
// earlier process; a file written anew since the decision keeps its content. Gives the number of
// changes carried out; tries all and reports the first failure.
Result<int> apply(iFileSystem& files, const std::string& root, const std::vector<Change>& changes);
// Tells whether a manifest found on disk still stands for a decided group: false when it outlived
// its group's end, or its group was given up.
Result<bool> stands(iFileSystem& files, const std::string& root,
                    const std::vector<Change>& changes);
// Flushes each folder that the changes touch once.
Status flushFolders(iFileSystem& files, const std::string& root,
                    const std::vector<Change>& changes);
// Removes staged and second names.
void discardAll(iFileSystem& files, const std::string& root, const std::vector<Change>& changes);

} // namespace cutroom::staging
