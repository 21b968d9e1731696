#include "interchange/EdlMarkersOut.h"

#include "interchange/ImportedJson.h"
#include "platform/base/Characters.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace cutroom {

namespace {

constexpr std::array<std::pair<const char*, std::uint32_t>, 8> kKnown = {{
    {"RED", 0xFF0000},
    {"GREEN", 0x00FF00},
    {"BLUE", 0x0000FF},
    {"CYAN", 0x00FFFF},
    {"MAGENTA", 0xFF00FF},
    {"YELLOW", 0xFFFF00},
    {"WHITE", 0xFFFFFF},
    {"BLACK", 0x000000},
}};

bool isRow(const Marker& marker) { return marker.owner == "list" && !marker.name.empty(); }

// Names made here are in lower case; in capitals they are custom.
bool isOwnSpelling(const std::string& colour) {
    return std::none_of(colour.begin(), colour.end(), isCapital);
}

long distance(std::uint32_t a, std::uint32_t b) {
    long sum = 0;
    for (const int shift : {0, 8, 16}) {
        const long by = static_cast<long>(a >> shift & 0xFF) - static_cast<long>(b >> shift & 0xFF);
        sum += by * by;
    }
    return sum;
}

std::string textOf(const Marker& marker) {
    const std::string name = edlOneLine(marker.name);
    const std::string text = edlOneLine(marker.comment);
    return name.empty() || text.empty() ? name + text : name + ": " + text;
}

} // namespace

std::string edlOneLine(std::string_view text) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
    return std::string(trim(line));
}

std::vector<const Marker*> EdlMarkersOut::locators(const Timeline& timeline) {
    std::vector<const Marker*> all;
    for (const Marker& marker : timeline.markers)
        if (!isRow(marker))
            all.push_back(&marker);
    std::stable_sort(all.begin(), all.end(),
                     [](const Marker* a, const Marker* b) { return a->start < b->start; });
    return all;
}

std::vector<const Marker*> EdlMarkersOut::rows(const Timeline& timeline) {
    std::vector<const Marker*> all;
    for (const Marker& marker : timeline.markers)
        if (isRow(marker))
            all.push_back(&marker);
    const auto number = [](const Marker* row) {
        return importedNumber(importedMember(row->metadata, "edl"), "number")
            .value_or(std::numeric_limits<double>::max());
    };
    std::stable_sort(all.begin(), all.end(),
                     [&](const Marker* a, const Marker* b) { return number(a) < number(b); });
    return all;
}

// The colour's name. Empty where none was read, unless the text would then be read as beginning
// with one.
std::string EdlMarkersOut::colourOf(const Marker& marker, const std::string& text) {
    if (marker.colourText.empty())
        return markerColour(text.substr(0, text.find(' '))) ? "WHITE" : "";
    if (marker.colourText[0] != '#' && markerColour(marker.colourText)) {
        std::string name = marker.colourText;
        const bool listed = marker.owner == "list" || marker.owner.starts_with("event ");
        if (listed && !isOwnSpelling(name))
            return name;
        std::transform(name.begin(), name.end(), name.begin(), toCapital);
        return name;
    }
    ++colours_;
    const std::uint32_t colour = marker.colour.value_or(0xFFFFFF);
    return std::min_element(kKnown.begin(), kKnown.end(),
                            [&](const auto& a, const auto& b) {
                                return distance(a.second, colour) < distance(b.second, colour);
                            })
        ->first;
}

std::string EdlMarkersOut::locator(const Marker& marker, const std::string& timecode) {
    const std::string text = textOf(marker);
    const std::string colour = colourOf(marker, text);
    lasting_ += marker.duration > 0;
    fields_ += static_cast<long>(marker.fields.size());
    return "LOC: " + timecode + (colour.empty() ? "" : format(" %-7s", colour.c_str())) +
           (text.empty() ? "" : " " + text);
}

// The track that a row named.
std::string EdlMarkersOut::trackOf(const Marker& marker) {
    const std::string track = importedText(importedMember(marker.metadata, "edl"), "track");
    return track.empty() ? "V1" : track;
}

std::string EdlMarkersOut::row(const Marker& marker, const std::string& timecode) {
    fields_ += static_cast<long>(marker.fields.size());
    return "    " + toText(++rows_) + "  " + colourOf(marker, "white") + "  " +
           edlOneLine(marker.name) + "  " + timecode + "  " + trackOf(marker) + "  " +
           edlOneLine(marker.comment);
}

} // namespace cutroom
