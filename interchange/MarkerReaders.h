// The readers behind `readMarkers`, one for each format.
#pragma once

#include "interchange/MarkerFile.h"

#include <map>

namespace cutroom {

inline constexpr std::size_t kMostMarkers = 1'000'000;

Result<MarkerFile> readCsvMarkers(std::string_view text, const std::string& file,
                                  const MarkerTarget& target);
Result<MarkerFile> readJsonMarkers(std::string_view text, const std::string& file,
                                   const MarkerTarget& target);
Result<MarkerFile> readSrtMarkers(std::string_view text, const std::string& file,
                                  const MarkerTarget& target);
Result<MarkerFile> readEdlMarkers(std::string_view text, const std::string& file,
                                  const MarkerTarget& target);

// What one row of a table, or one object, says of a marker. A column or member that the file lacks
// is nothing; one that is left blank is "".
struct MarkerTexts {
    std::optional<std::string> name;
    std::optional<std::string> description;
    std::optional<std::string> in;
    std::optional<std::string> out;
    std::optional<std::string> duration; // a timecode
    std::optional<std::string> colour;
    std::vector<std::pair<std::string, std::string>> fields; // key and value
    bool pointsEnd = false; // a point is written with an end at its start
};

// The marker that the texts describe. The failure holds the reason only. An unknown colour is left
// out with a warning, which names the line unless that is 0.
Result<MarkerRead> markerOf(const MarkerTexts& texts, long line, const MarkerTarget& target,
                            std::vector<std::string>& warnings);

// Names that a file may give the custom fields of the project, with their keys.
std::map<std::string, std::string> markerFieldKeys();

} // namespace cutroom
