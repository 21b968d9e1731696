// The least work of writing markers as text: appending to a buffer, with escaping and two timecodes
// a marker, counted at 25 frames a second.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace cutroom::bench {

struct PlainMarker {
    double start = 0;
    double end = 0;
    std::string name; // UTF-8
    std::string description;
    std::string colour;
};

// `count` ranges of two seconds, in order, with texts as people write them: every other one with
// something to escape or beyond ASCII, none longer than a line of a subtitle.
std::vector<PlainMarker> plainMarkers(std::size_t count);

// "HH:MM:SS:FF", and with the frames as milliseconds.
void appendTimecode(std::string& out, double seconds);
void appendSubtitleTime(std::string& out, double seconds);

std::string plainJson(const std::vector<PlainMarker>& markers);
std::string plainXml(const std::vector<PlainMarker>& markers);
std::string plainSrt(const std::vector<PlainMarker>& markers);

} // namespace cutroom::bench
