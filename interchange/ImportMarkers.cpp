#include "interchange/ImportMarkers.h"

#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"

#include <algorithm>

namespace cutroom {

namespace {

const char* textOf(MarkerPlacement placement) {
    switch (placement) {
    case MarkerPlacement::asMeant:
        return "as meant";
    case MarkerPlacement::fromFirstFrame:
        return "from first frame";
    case MarkerPlacement::recordTimecode:
        return "record timecode";
    case MarkerPlacement::outside:
        break;
    }
    return "outside";
}

std::string metadataOf(const Marker& marker) {
    ImportedJson json;
    json.add(kImportedOwner, marker.owner);
    json.add(kImportedPlacement, textOf(marker.placement));
    json.add(kImportedWritten, toSeconds(marker.written));
    json.add(kImportedMeant, toSeconds(marker.meant));
    json.add(kImportedRate, marker.rate.literal);
    json.add(kImportedColour, marker.colourText);
    json.addRaw(kImportedRange, marker.range);
    json.addRaw(kImportedMetadata, marker.metadata);
    json.addRaw(kImportedExtra, marker.extra);
    return json.take();
}

Cue cueOf(const Marker& marker) {
    Cue cue(toSeconds(std::max<Flicks>(0, marker.start)), toWide(marker.name));
    if (marker.duration > 0)
        cue.setEndTime(toSeconds(marker.start + marker.duration));
    cue.setDescription(toWide(marker.comment));
    if (marker.colour)
        cue.setColour(*marker.colour);
    cue.setFlags(kCueVisible | kCueUser);
    for (const auto& [key, value] : marker.fields)
        cue.setCustomMetadata(key, toWide(value));
    cue.setImportedMetadata(metadataOf(marker));
    return cue;
}

} // namespace

CueList importedCues(const Timeline& timeline) {
    std::vector<const Marker*> inOrder;
    inOrder.reserve(timeline.markers.size());
    for (const Marker& marker : timeline.markers)
        inOrder.push_back(&marker);
    std::stable_sort(inOrder.begin(), inOrder.end(),
                     [](const Marker* a, const Marker* b) { return a->start < b->start; });
    CueList cues; // each goes to the end, which costs nothing
    for (const Marker* marker : inOrder)
        cues.addCuePoint(cueOf(*marker));
    return cues;
}

} // namespace cutroom
