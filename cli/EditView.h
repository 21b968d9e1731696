// An edit as the command shows it: tracks of clips, gaps and transitions, and markers, in frames of
// the edit counted from its start.
#pragma once

#include "platform/base/Timecode.h"
#include "platform/store/EditPtr.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace JSON {
class Builder;
}

namespace cutroom::cli {

struct ItemView {
    enum class Type { clip, gap, transition };
    Type type = Type::clip;
    std::string name;
    std::int64_t start = 0;
    std::int64_t duration = 0;
    std::int64_t sourceStart = 0; // where the media that is seen begins, also of a backward clip
    std::string source;           // the log or edit that is played; empty for subtitles
    std::string media;
    double speed = 1.0;
    bool enabled = true;
};

struct TrackView {
    std::string id;
    std::string kind; // "video", "audio", "subtitle", "other"
    std::string name;
    // Clips and gaps cover the track without holes; a transition stands before the clip it leads
    // into, lies over its neighbours and takes no time of its own.
    std::vector<ItemView> items;
};

struct MarkerView {
    std::string id;
    std::string name;
    std::string description;
    double start = 0;
    std::optional<double> end; // nothing: a point
    std::string colour;
    std::string startTimecode;
    std::string endTimecode; // empty for a point
};

struct EditView {
    std::string id;
    std::string name;
    unsigned logType = 0;
    TimecodeFormat format;
    std::string startTimecode;
    std::int64_t durationFrames = 0;
    double durationSeconds = 0;
    std::vector<TrackView> tracks;
    std::vector<MarkerView> markers;
};

// Describes what `edit` holds at this moment. Tracks made for the editor's own use are left out.
EditView describe(const EditPtr& edit);

// The fixed JSON form of a view.
std::string toJson(const EditView& view);
// One marker of it, as the current object's next entry.
void addJson(JSON::Builder& json, const MarkerView& marker);

// The view as a picture (SVG).
std::string toSvg(const EditView& view);

// The view drawn with characters: a ruler, one row of boxes per track, the markers, within `width`
// columns.
std::string draw(const EditView& view, int width, bool colour);

} // namespace cutroom::cli
