#include "interchange/EdlReader.h"

#include "interchange/EdlComments.h"
#include "interchange/EdlList.h"
#include "interchange/EdlTiming.h"
#include "interchange/EdlTracks.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/files/JsonBuilder.h"

#include <algorithm>
#include <utility>

namespace cutroom {

namespace {

constexpr std::uint64_t kMaxEdlBytes = std::uint64_t{16} << 20;

// What a row of a table says that a marker has no place for.
std::string rowMetadata(const EdlMarker& row) {
    JSON::Builder json(JSON::Layout::compact);
    json.beginObject();
    json.beginObject("edl");
    json.add("number", row.number);
    json.add("track", row.track);
    json.endObject();
    json.endObject();
    return json.take();
}

// The comments above the first event, as those of an event are kept.
std::string headerMetadata(const std::vector<std::string>& comments) {
    JSON::Builder json(JSON::Layout::compact);
    json.beginObject();
    json.beginObject("edl");
    json.beginArray("comments");
    for (const std::string& comment : comments)
        json.add(comment);
    json.endArray();
    json.endObject();
    json.endObject();
    return json.take();
}

// Puts a marker on the timeline, whose record time it is written in.
void addMarker(const EdlMarker& read, const EdlClock& clock, const EdlPlaces& places,
               Timeline& timeline) {
    const std::int64_t frame = places.fromFirst(read.at, clock);
    Marker marker;
    marker.name = read.name;
    marker.comment = read.text;
    marker.colourText = read.colour;
    marker.colour = markerColour(read.colour);
    marker.owner = read.owner;
    if (!read.track.empty())
        marker.metadata = rowMetadata(read);
    marker.rate.rate = clock.rate;
    marker.meant = clock.rate.frameToFlicks(frame);
    marker.written = clock.rate.frameToFlicks(clock.record(read.at));
    marker.start = std::max<Flicks>(0, marker.meant);
    marker.duration = clock.rate.frameToFlicks(frame + read.frames) - marker.meant;
    if (frame < 0 || (places.last > places.first && frame > places.last - places.first)) {
        marker.placement = MarkerPlacement::outside;
        addWarning(timeline, "markers lie outside the record time of the list");
    }
    timeline.markers.push_back(std::move(marker));
}

// A list of markers alone begins at the first of them.
void placeMarkersAlone(const EdlList& list, const EdlClock& clock, EdlPlaces& places) {
    places.first = clock.record(list.markers.front().at);
    for (const EdlMarker& marker : list.markers)
        places.first = std::min(places.first, clock.record(marker.at));
    places.last = places.first;
}

Timeline describe(const EdlList& list, const EdlClock& clock, const EdlPlaces& places,
                  const std::string& file) {
    Timeline timeline;
    timeline.name = list.title;
    if (timeline.name.empty()) {
        timeline.name = nameOf(file);
        if (const auto extension = extensionOf(file); !extension.empty())
            timeline.name.resize(timeline.name.size() - extension.size() - 1);
    }
    timeline.source = "CMX 3600";
    if (!list.header.empty())
        timeline.metadata = headerMetadata(list.header);
    timeline.rate.rate = clock.rate;
    timeline.startRate.rate = clock.rate;
    timeline.dropFrame = clock.recordDrop;
    timeline.rateAssumed = clock.assumed;
    timeline.startFrame = places.first % clock.day();
    timeline.startWritten = static_cast<double>(places.first);
    timeline.duration = clock.rate.frameToFlicks(places.last - places.first);
    return timeline;
}

// The reason why a file without events is not an edit list, by what it seems to be instead.
const char* whyNoList(std::string_view bytes) {
    const std::string_view head = bytes.substr(0, 4096);
    if (head.find("WEBVTT") != head.npos)
        return "WebVTT subtitles; save them as SubRip and import them with --as-subtitles EDIT";
    if (head.find(" --> ") != head.npos)
        return "subtitles, not a timeline; --as-subtitles EDIT lays them on an edit";
    const auto first = head.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    if (first != head.npos && head[first] == '<')
        return "an XML document; save the timeline as OTIO or as an edit list";
    return "no line of it is an event of an edit list";
}

Status refusal(const std::string& file, long line, std::string reason) {
    return Status(StatusCode::damaged, file, std::move(reason), line);
}

} // namespace

Result<std::vector<Timeline>> readEdl(std::string_view bytes, const std::string& file,
                                      std::optional<Kv::FrameRate> rate) {
    if (bytes.size() > kMaxEdlBytes)
        return refusal(file, 0, "larger than any edit list");
    const std::string_view head = bytes.substr(0, 2);
    const bool isHalfOfUnit = std::count(head.begin(), head.end(), '\0') == 1;
    if (head == "\xFF\xFE" || head == "\xFE\xFF" || isHalfOfUnit)
        return refusal(file, 1, "text in UTF-16; save it as UTF-8");
    if (rate && !rate->valid())
        return Status(StatusCode::wrongUsage, file, "no frame rate was given");
    bool latin1 = false;
    const EdlList list = parseEdlLines(edlLines(bytes, &latin1));
    if (list.events.empty() && list.markers.empty() && list.firstBadEvent > 0)
        return refusal(file, list.firstBadEvent,
                       "the line looks like an event but cannot be read, and no other line can");
    if (list.events.empty() && list.markers.empty())
        return refusal(file, 0, whyNoList(bytes));
    std::vector<std::string> warnings = list.warnings;
    if (latin1)
        warnings.push_back("the text is not UTF-8; names were read byte by byte as Latin-1");
    const auto clock = chooseClock(list, rate, file, warnings);
    if (!clock)
        return clock.status();
    EdlPlaces places = placeEvents(list, *clock, warnings);
    if (list.events.empty())
        placeMarkersAlone(list, *clock, places);

    Timeline timeline = describe(list, *clock, places, file);
    timeline.warnings = std::move(warnings);
    if (!layEvents(list, *clock, places, timeline))
        return refusal(file, 0, "more than 512 tracks or a million items would be needed");
    for (const EdlMarker& marker : list.markers)
        addMarker(marker, *clock, places, timeline);
    std::vector<Timeline> timelines;
    timelines.push_back(std::move(timeline));
    return timelines;
}

Result<std::vector<Timeline>> readEdlFile(const std::string& path,
                                          std::optional<Kv::FrameRate> rate) {
    auto bytes = readFile(path, kMaxEdlBytes);
    if (!bytes)
        return bytes.status();
    return readEdl(*bytes, path, rate);
}

} // namespace cutroom
