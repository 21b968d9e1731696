#include "interchange/OtioMarkers.h"

#include "interchange/OtioReader.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cutroom::otio {

namespace {

std::uint32_t channel(const Json& colour, std::string_view key) {
    const double value = colour->getDouble(key);
    return std::isfinite(value)
               ? static_cast<std::uint32_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255))
               : 0;
}

// A colour's name, or an object with parts from 0 to 1.
void readColour(const Json& colour, Marker& marker) {
    if (!colour)
        return;
    if (colour->isString()) {
        marker.colourText = colour->text();
        marker.colour = markerColour(marker.colourText);
    } else if (colour->isObject()) {
        marker.colour =
            channel(colour, "r") << 16 | channel(colour, "g") << 8 | channel(colour, "b");
        marker.colourText = colour->getString("name");
        if (marker.colourText.empty())
            marker.colourText = format("#%06X", *marker.colour);
    }
}

// The metadata, without what this program keeps there: the values of a project's fields.
void readMetadata(Document& document, const Json& object, const Place& place, Marker& marker) {
    const Json metadata = document.member(object, "metadata");
    const Json own = metadata && metadata->isObject() ? metadata->find(kOwnMetadata) : Json();
    const Json fields = own && own->isObject() ? own->find(kOwnFields) : Json();
    if (!fields || !fields->isObject()) {
        marker.metadata = document.raw(metadata, place);
        return;
    }
    for (const Json& field : fields->children())
        if (field->isString())
            marker.fields.emplace_back(field->key(),
                                       document.keep(std::string(field->text()), place));
    marker.metadata = otherMembers(document, metadata, place, {kOwnMetadata});
}

bool fits(Flicks time, const Span& owner) { return time >= owner.start && time <= owner.end(); }

// Where a marker lies by each habit.
struct Places {
    Flicks meant;
    Flicks fromFirstFrame;
    Flicks asTimecode;
    bool meantFits;
    bool fromFirstFits;
};

Places placesOf(const PendingMarker& pending, Flicks startTime) {
    const Flicks written = pending.marker.written;
    const Flicks meant = pending.owner.start + written - pending.ownerSource;
    const Flicks fromFirst = pending.owner.start + written;
    return {meant, fromFirst, written - startTime, fits(meant, pending.owner),
            fits(fromFirst, pending.owner)};
}

// A file whose writer counts from the clips' first frames does so throughout, though now and then
// such a place may fit as meant.
bool countsFromFirstFrames(const std::vector<PendingMarker>& all, Flicks startTime) {
    std::size_t telling = 0, meant = 0, fromFirst = 0;
    for (const PendingMarker& pending : all) {
        if (pending.placed || !pending.ofItem || pending.ownerSource == 0)
            continue;
        const Places places = placesOf(pending, startTime);
        ++telling;
        meant += places.meantFits;
        fromFirst += places.fromFirstFits;
    }
    return telling > 0 && fromFirst == telling && meant * 2 < telling;
}

// Chooses the habit and the place; false when the marker fits in no way.
bool choosePlace(PendingMarker& pending, bool fromFirstFrames, Flicks startTime,
                 const Timeline& timeline) {
    Marker& marker = pending.marker;
    const Places places = placesOf(pending, startTime);
    marker.meant = places.meant;
    const bool timecodeFits =
        timeline.startFrame && fits(places.asTimecode, Span{0, timeline.duration});
    const bool fromFirst = places.fromFirstFits && pending.ofItem;
    if (places.meantFits && !(fromFirstFrames && fromFirst && pending.ownerSource != 0)) {
        marker.placement = MarkerPlacement::asMeant;
        marker.start = places.meant;
    } else if (timecodeFits && (startTime > 0 || !fromFirst)) {
        marker.placement = MarkerPlacement::recordTimecode;
        marker.start = places.asTimecode;
    } else if (fromFirst) {
        marker.placement = MarkerPlacement::fromFirstFrame;
        marker.start = places.fromFirstFrame;
    } else {
        marker.placement = MarkerPlacement::outside;
        marker.start = std::max<Flicks>(0, pending.owner.start);
        return false;
    }
    marker.start = std::max<Flicks>(0, marker.start);
    return true;
}

} // namespace

std::vector<PendingMarker> readMarkers(Document& document, const Json& object, const Place& place,
                                       const std::string& owner) {
    std::vector<PendingMarker> all;
    const Json list = document.member(object, "markers");
    if (!list)
        return all;
    const Place here = place.at("markers");
    std::size_t index = 0;
    for (const Json& child : list->children()) {
        const Place at = here.at(index++);
        const Json read = document.follow(child);
        if (!read || !read->isObject() || !document.mayAdd(at))
            continue;
        auto range = readRange(document, read, "marked_range", at);
        if (!range)
            range = readRange(document, read, "range", at);
        if (!range) {
            document.warn("markers without a range are left out");
            continue;
        }
        PendingMarker pending;
        Marker& marker = pending.marker;
        marker.name = textOf(document, read, "name");
        marker.comment = textOf(document, read, "comment");
        marker.written = range->start.flicks;
        marker.duration = range->duration.flicks;
        marker.rate = range->start.rate;
        marker.owner = owner;
        readMetadata(document, read, at, marker);
        const Json written = document.member(read, "marked_range");
        marker.range = document.raw(written ? written : document.member(read, "range"), at);
        marker.extra = otherMembers(document, read, at,
                                    {"OTIO_SCHEMA", "OTIO_REF_ID", "name", "metadata", "comment",
                                     "color", "marked_range", "range"});
        readColour(document.member(read, "color"), marker);
        all.push_back(std::move(pending));
    }
    return all;
}

PlaceCounts decidePlaces(std::vector<PendingMarker>& pending, const Timeline& timeline) {
    const Flicks startTime =
        timeline.startFrame && timeline.startRate.valid()
            ? toFlicks(timeline.startWritten / timeline.startRate.rate.asDouble())
            : 0;
    const bool fromFirstFrames = countsFromFirstFrames(pending, startTime);
    PlaceCounts counts;
    for (PendingMarker& each : pending) {
        if (each.placed)
            continue;
        counts.outside += !choosePlace(each, fromFirstFrames, startTime, timeline);
        counts.byHabit += each.marker.placement == MarkerPlacement::fromFirstFrame ||
                          each.marker.placement == MarkerPlacement::recordTimecode;
    }
    return counts;
}

void placeMarkers(Document& document, std::vector<PendingMarker> pending, Timeline& timeline) {
    const auto [outside, byHabit] = decidePlaces(pending, timeline);
    for (PendingMarker& each : pending)
        timeline.markers.push_back(std::move(each.marker));
    if (byHabit > 0)
        document.warn("markers not counted in the time of what they mark, placed by their first "
                      "frame or timecode: " +
                      toText(static_cast<unsigned long long>(byHabit)));
    if (outside > 0)
        document.warn("markers outside of what they mark, placed at its start: " +
                      toText(static_cast<unsigned long long>(outside)));
}

} // namespace cutroom::otio
