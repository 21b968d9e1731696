// The JSON form of an edit. Other tools depend on it: keys may be added, never changed.
#include "cli/EditView.h"

#include "platform/files/JsonBuilder.h"

namespace cutroom::cli {

namespace {

const char* typeText(ItemView::Type type) {
    switch (type) {
    case ItemView::Type::clip:
        return "clip";
    case ItemView::Type::gap:
        return "gap";
    case ItemView::Type::transition:
        break;
    }
    return "transition";
}

void addItem(JSON::Builder& json, const ItemView& item) {
    json.beginObject();
    json.add("type", typeText(item.type));
    json.add("name", item.name);
    json.add("start_frame", item.start);
    json.add("duration_frames", item.duration);
    json.add("source_start_frame", item.sourceStart);
    json.add("media", item.media);
    json.add("speed", item.speed);
    json.add("enabled", item.enabled);
    json.add("source", item.source);
    json.endObject();
}

void addTrack(JSON::Builder& json, const TrackView& track) {
    json.beginObject();
    json.add("id", track.id);
    json.add("kind", track.kind);
    json.add("name", track.name);
    json.beginArray("items");
    for (const ItemView& item : track.items)
        addItem(json, item);
    json.endArray();
    json.endObject();
}

} // namespace

void addJson(JSON::Builder& json, const MarkerView& marker) {
    json.beginObject();
    json.add("name", marker.name);
    json.add("description", marker.description);
    json.add("start", marker.start);
    if (marker.end)
        json.add("end", *marker.end);
    else
        json.addNull("end");
    json.add("colour", marker.colour);
    json.add("start_timecode", marker.startTimecode);
    if (marker.end)
        json.add("end_timecode", marker.endTimecode);
    else
        json.addNull("end_timecode");
    json.add("id", marker.id);
    json.endObject();
}

std::string toJson(const EditView& view) {
    JSON::Builder json;
    json.beginObject();
    json.add("id", view.id);
    json.add("name", view.name);
    json.add("log_type", view.logType);
    json.beginObject("frame_rate");
    json.add("num", view.format.rate.num());
    json.add("den", view.format.rate.den());
    json.endObject();
    json.add("drop_frame", view.format.dropFrame);
    json.add("start_timecode", view.startTimecode);
    json.add("duration_frames", view.durationFrames);
    json.add("duration_seconds", view.durationSeconds);
    json.beginArray("tracks");
    for (const TrackView& track : view.tracks)
        addTrack(json, track);
    json.endArray();
    json.beginArray("markers");
    for (const MarkerView& marker : view.markers)
        addJson(json, marker);
    json.endArray();
    json.endObject();
    return json.take();
}

} // namespace cutroom::cli
