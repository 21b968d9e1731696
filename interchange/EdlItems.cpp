#include "interchange/EdlTracks.h"

#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"

namespace cutroom {

namespace {

// What the list said of the event, kept as it was written.
std::string metadataOf(const EdlEvent& event) {
    JSON::Builder json(JSON::Layout::compact);
    json.beginObject();
    json.beginObject("edl");
    json.add("event", event.number);
    json.add("reel", event.reel.empty() ? "AX" : event.reel);
    json.add("channel", event.channel);
    json.add("transition", event.kindText);
    if (event.duration > 0)
        json.add("transition_frames", event.duration);
    json.add("timecodes", event.timecodes);
    if (event.sourceDrop || event.sourceIn.drop)
        json.add("drop_frame", true);
    if (!event.speedText.empty())
        json.add("frames_per_second", event.speedText);
    if (!event.keyName.empty())
        json.add("key_clip_name", event.keyName);
    if (!event.comments.empty()) {
        json.beginArray("comments");
        for (const std::string& comment : event.comments)
            json.add(comment);
        json.endArray();
    }
    json.endObject();
    json.endObject();
    return json.take();
}

// In a transition FROM is the clip before it; in a cut FROM is the clip itself.
const std::string& clipName(const EdlEvent& event) {
    return event.isTransition() ? event.toName : event.fromName;
}

MediaReference mediaOf(const EdlEvent& event) {
    MediaReference media;
    const bool generated = event.isTransition() ? event.toGenerated : event.fromGenerated;
    media.reel = event.reelName.empty() ? event.reel : event.reelName;
    // Without a reel the clip name is all that tells one source from another.
    media.name = media.reel.empty() ? clipName(event) : media.reel;
    if (generated) {
        media.kind = ReferenceKind::generator;
        media.location = clipName(event);
    } else if (!event.sourceFile.empty()) {
        media.kind = ReferenceKind::external;
        media.location = event.sourceFile;
    } else {
        media.kind = ReferenceKind::missing;
    }
    return media;
}

} // namespace

Item edlItem(const EdlEvent& event, const EdlPlace& place, std::int64_t first,
             const EdlClock& clock) {
    Item item;
    item.start = clock.rate.frameToFlicks(place.in - first);
    item.duration = clock.rate.frameToFlicks(place.out - first) - item.start;
    item.channel = event.channel;
    item.metadata = metadataOf(event);
    item.sourceRate.rate = place.sourceRate;
    if (event.isBlack()) {
        item.type = ItemType::gap;
        item.name = "BL";
        return item;
    }
    item.name = clipName(event);
    if (item.name.empty())
        item.name = event.reelName.empty() ? event.reel : event.reelName;
    item.sourceStart = place.source;
    item.sourceDrop = event.sourceDrop || event.sourceIn.drop;
    if (event.framesPerSecond)
        item.speed = *event.framesPerSecond / clock.rate.nominal();
    item.media = mediaOf(event);
    return item;
}

std::string outgoingMetadata(const EdlEvent& outgoing, const EdlEvent& transition, bool other) {
    JSON::Builder json(JSON::Layout::compact);
    json.beginObject();
    json.beginObject("edl");
    json.beginObject("outgoing");
    json.add("event", outgoing.number);
    json.add("reel", outgoing.reel.empty() ? "AX" : outgoing.reel);
    json.add("clip_name", transition.fromName);
    json.add("timecodes", outgoing.timecodes);
    if (!outgoing.speedText.empty())
        json.add("frames_per_second", outgoing.speedText);
    if (other)
        json.add("other", true);
    json.endObject();
    json.endObject();
    json.endObject();
    return json.take();
}

void keepContinuation(Item& item, const Item& rest) {
    constexpr std::size_t kClosing = 2; // braces of "edl" and of the whole
    item.metadata.resize(item.metadata.size() - kClosing);
    item.metadata += ",\"continued\":";
    item.metadata += importedMember(rest.metadata, "edl");
    item.metadata += "}}";
}

} // namespace cutroom
