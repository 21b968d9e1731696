#include "interchange/OtioComposition.h"

#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cutroom::otio {

namespace {

std::string childPath(const std::string& owner, std::size_t index) {
    return owner + "/" + toText(static_cast<unsigned long long>(index));
}

// Reads items one after the other, each beginning where the one before ends, the first at 0. Gives
// the range they take: transitions add to it at the head and the tail only.
Span readChildren(Document& document, const Json& object, const Place& place,
                  const std::string& owner, Timeline& timeline, Track& track, Found& found) {
    Span range;
    Flicks at = 0;
    const Json children = document.member(object, "children");
    const Place here = place.at("children");
    std::size_t index = 0;
    const std::size_t count = children ? children->size() : 0;
    for (const Json& child : children ? children->children() : std::vector<Json>()) {
        const Json read = document.follow(child);
        const std::size_t own = index++;
        const Place childPlace = here.at(own);
        if (document.failed())
            return range;
        if (!read || !read->isObject()) {
            document.warn("children that are no objects, or refer to none, are left out");
            continue;
        }
        const std::size_t markersBefore = found.markers.size();
        Item item;
        if (schemaOf(read) == "Transition") {
            item = readTransition(document, read, childPlace);
            if (own == 0)
                range.start = -item.inOffset;
            if (own + 1 == count)
                range.duration += item.outOffset;
            item.start += at;
        } else {
            item = readItem(document, read, childPlace, childPath(owner, own), timeline, found);
            item.start = at;
            moveMarkers(found.markers, markersBefore, at);
            at += item.duration;
        }
        if (at > kMaxFlicks)
            document.fail(childPlace, "the track is longer than a hundred years");
        track.items.push_back(std::move(item));
    }
    range.duration += at - range.start;
    return range;
}

// The items of a child of a stack: a track's own, or the one thing that plays alone.
void readLayer(Document& document, const Json& object, const Place& place, const std::string& owner,
               Timeline& timeline, Found& found) {
    Track track;
    track.place = static_cast<int>(place.index);
    if (schemaOf(object) == "Track") {
        readTrack(document, object, place, owner, timeline, track, found);
    } else {
        track.kindText = "Video";
        track.alone = true;
        track.items.push_back(readItem(document, object, place, owner, timeline, found));
        track.name = track.items.front().name;
        track.duration = track.items.front().duration;
    }
    timeline.tracks.push_back(std::move(track));
}

void readLayers(Document& document, const Json& stack, const Place& place, const std::string& owner,
                Timeline& timeline, std::vector<Found>& found) {
    const Json children = document.member(stack, "children");
    const Place here = place.at("children");
    std::size_t index = 0;
    for (const Json& child : children ? children->children() : std::vector<Json>()) {
        const Json read = document.follow(child);
        const std::size_t own = index++;
        if (document.failed())
            return;
        if (!read || !read->isObject() || schemaOf(read) == "Transition") {
            document.warn("children of a stack that cannot play on their own are left out");
            continue;
        }
        found.emplace_back();
        readLayer(document, read, here.at(own), childPath(owner, own), timeline, found.back());
    }
}

// Trims the tracks to the range of their stack and takes the stack's markers.
void finishStack(Document& document, const Json& stack, const Place& place,
                 const std::string& owner, Timeline& timeline, std::vector<Found>& found) {
    const auto range = readRange(document, stack, "source_range", place);
    for (std::size_t i = 0; i < timeline.tracks.size(); ++i) {
        Track& track = timeline.tracks[i];
        if (range) {
            if (trimTo(range->span(), track.items, found[i].markers) > 0)
                document.warn("things outside the range of their stack are left out");
            track.duration =
                std::clamp<Flicks>(track.duration - range->start.flicks, 0, range->duration.flicks);
        }
        timeline.duration = std::max(timeline.duration, track.duration);
    }
    std::vector<RateRead> rates;
    if (range) {
        timeline.duration = range->duration.flicks;
        rates.push_back(range->duration.rate);
    }
    std::vector<PendingMarker> own = readMarkers(document, stack, place, owner);
    for (PendingMarker& pending : own) {
        pending.owner = {0, timeline.duration};
        pending.ownerSource = range ? range->start.flicks : 0;
    }
    found.push_back({std::move(own), std::move(rates)});
}

// The label of the first frame at the timeline's rate: the same hours, minutes and seconds, and the
// frames in proportion, for the start is often written at another rate.
void setStart(const Time& start, Timeline& timeline) {
    timeline.startWritten = start.value;
    timeline.startRate = start.rate;
    const double nominal = start.rate.rate.nominal();
    timeline.startFrame = std::llround(start.value / nominal * timeline.rate.rate.nominal());
    timeline.dropFrame = meansDropFrame(*timeline.startFrame, timeline.rate.rate);
}

} // namespace

bool meansDropFrame(std::int64_t startFrame, const Kv::FrameRate& rate) {
    const auto isWholeMinute = [&](bool drop) {
        const std::string text = timecodeText(startFrame, {rate, drop});
        return text.substr(6, 2) == "00" && text.substr(9) == "00";
    };
    return rate.allowsDropFrame() && startFrame > 0 && isWholeMinute(true) && !isWholeMinute(false);
}

void readTrack(Document& document, const Json& object, const Place& place, const std::string& owner,
               Timeline& timeline, Track& track, Found& found) {
    track.name = textOf(document, object, "name");
    track.kindText = textOf(document, object, "kind");
    if (track.kindText.empty())
        track.kindText = "Video";
    track.kind = trackKind(track.kindText);
    track.enabled = object->getBool("enabled", true);
    track.metadata = document.raw(object->find("metadata"), place);
    track.effects = document.raw(document.member(object, "effects"), place);
    track.extra = otherMembers(document, object, place,
                               {"OTIO_SCHEMA", "OTIO_REF_ID", "name", "metadata", "source_range",
                                "effects", "markers", "enabled", "children", "kind"});
    Span range = readChildren(document, object, place, owner, timeline, track, found);
    if (const auto own = readRange(document, object, "source_range", place)) {
        range = own->span();
        found.rates.push_back(own->duration.rate);
    } else if (std::any_of(track.items.begin(), track.items.end(), [&](const Item& item) {
                   return item.start < range.start || item.end() > range.end();
               })) {
        document.warn("transitions that reach beyond their track are shortened");
    }
    if (trimTo(range, track.items, found.markers) > 0)
        document.warn("things outside the range of their track are left out");
    track.duration = range.duration;
    for (PendingMarker& pending : readMarkers(document, object, place, owner)) {
        pending.owner = {0, range.duration};
        pending.ownerSource = range.start;
        found.markers.push_back(std::move(pending));
    }
}

Timeline readComposition(Document& document, const Json& object, const Place& place,
                         const std::string& owner, const Time* start) {
    Timeline timeline;
    std::vector<Found> found;
    const bool whole = schemaOf(object) == "Timeline";
    const Json content = whole ? document.member(object, "tracks") : object;
    const Place here = whole ? place.at("tracks") : place;
    if (content && schemaOf(content) == "Stack") {
        readLayers(document, content, here, owner, timeline, found);
        finishStack(document, content, here, owner, timeline, found);
    } else if (content && content->isObject()) {
        found.emplace_back();
        readLayer(document, content, here, owner, timeline, found.front());
        timeline.duration = timeline.tracks.front().duration;
    }
    if (document.failed())
        return timeline;
    std::vector<PendingMarker> markers;
    for (Found& each : found)
        std::move(each.markers.begin(), each.markers.end(), std::back_inserter(markers));
    timeline.rate = chooseRate(found, timeline, start, timeline.rateAssumed);
    if (timeline.rateAssumed && !timeline.tracks.empty())
        document.warn("no frame rate up to 120 is stated; " + timeline.rate.rate.asString() +
                      " taken");
    if (start)
        setStart(*start, timeline);
    placeMarkers(document, std::move(markers), timeline);
    return timeline;
}

} // namespace cutroom::otio
