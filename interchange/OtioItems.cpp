#include "interchange/OtioComposition.h"
#include "interchange/OtioMedia.h"
#include "platform/files/JsonBuilder.h"

#include <utility>

namespace cutroom::otio {

namespace {

void readCommon(Document& document, const Json& object, const Place& place, Item& item) {
    item.name = textOf(document, object, "name");
    item.enabled = object->getBool("enabled", true);
    item.metadata = document.raw(object->find("metadata"), place);
    item.effects = document.raw(document.member(object, "effects"), place);
    item.extra =
        otherMembers(document, object, place,
                     {"OTIO_SCHEMA", "OTIO_REF_ID", "name", "metadata", "source_range", "effects",
                      "markers", "enabled", "children", "kind", "tracks", "global_start_time",
                      "media_reference", "media_references", "active_media_reference_key",
                      "transition_type", "in_offset", "out_offset"});
}

void takeRange(const Range& range, Item& item, Found& found) {
    item.sourceStart = range.start.flicks;
    item.sourceRate = range.start.rate;
    item.duration = range.duration.flicks;
    found.rates.push_back(range.duration.rate);
}

// Takes the range of a clip or gap, and how it is written; false when it has none.
bool readSourceRange(Document& document, const Json& object, const Place& place, Item& item,
                     Found& found) {
    const auto range = readRange(document, object, "source_range", place);
    if (!range)
        return false;
    takeRange(*range, item, found);
    item.range = document.raw(document.member(object, "source_range"), place);
    return true;
}

void readClip(Document& document, const Json& object, const Place& place, Item& item,
              Found& found) {
    item.media = readMedia(document, object, place);
    item.speed = readSpeed(document, object, place);
    if (readSourceRange(document, object, place, item, found))
        return;
    if (item.media.available) {
        item.sourceStart = item.media.available->start;
        item.sourceRate = item.media.rate;
        item.duration = item.media.available->duration;
        found.rates.push_back(item.media.rate);
    } else {
        document.fail(place, "the length of the clip \"" + item.name +
                                 "\" is unknown: neither it nor its media has a range");
    }
}

// A nested thing plays a timeline of its own; its markers are markers of the outer one as well.
void readNested(Document& document, const Json& object, const Place& place,
                const std::string& owner, Timeline& timeline, Item& item, Found& found) {
    const Document::Level level(document, place);
    if (!level)
        return;
    Timeline nested = readComposition(document, object, place, owner, nullptr);
    nested.name = item.name;
    nested.source = textOf(document, object, "OTIO_SCHEMA");
    nested.owner = owner;
    item.type = ItemType::nested;
    item.duration = nested.duration;
    item.sourceRate = nested.rate;
    item.speed = readSpeed(document, object, place);
    item.nested = static_cast<int>(timeline.nested.size());
    if (!nested.rateAssumed)
        found.rates.push_back(nested.rate);
    for (const Marker& marker : nested.markers) {
        if (!document.mayAdd(place))
            return;
        PendingMarker& pending = found.markers.emplace_back();
        pending.marker = marker;
        pending.owner = {0, item.duration};
        pending.ofItem = true;
        pending.placed = true;
    }
    roundToFrames(nested);
    for (const std::string& warning : nested.warnings)
        document.warn(warning);
    nested.warnings.clear();
    timeline.nested.push_back(std::move(nested));
}

void readGap(Document& document, const Json& object, const Place& place, Item& item, Found& found) {
    item.type = ItemType::gap;
    if (!readSourceRange(document, object, place, item, found))
        document.warn("gaps without a range take no time");
}

// The offsets of a transition as written.
std::string offsetsOf(Document& document, const Json& transition, const Place& place) {
    JSON::Builder builder(JSON::Layout::compact);
    builder.beginObject();
    for (const char* const key : {"in_offset", "out_offset"})
        if (const Json offset = document.member(transition, key))
            builder.add(key, *offset);
    builder.endObject();
    return document.keep(builder.take(), place);
}

} // namespace

Item readItem(Document& document, const Json& object, const Place& place, const std::string& owner,
              Timeline& timeline, Found& found) {
    Item item;
    if (!document.mayAdd(place))
        return item;
    readCommon(document, object, place, item);
    const std::string_view schema = schemaOf(object);
    if (schema == "Stack" || schema == "Track" || schema == "Timeline") {
        readNested(document, object, place, owner, timeline, item, found);
        return item;
    }
    if (schema == "Clip") {
        readClip(document, object, place, item, found);
    } else {
        readGap(document, object, place, item, found);
        if (schema != "Gap") {
            document.warn("things of the unknown schema \"" + std::string(schema) +
                          "\" are kept as gaps");
            if (!schema.empty())
                item.extra = document.raw(object, place);
        }
    }
    for (PendingMarker& pending : readMarkers(document, object, place, owner)) {
        pending.owner = {0, item.duration};
        pending.ownerSource = item.sourceStart;
        pending.ofItem = true;
        found.markers.push_back(std::move(pending));
    }
    return item;
}

Item readTransition(Document& document, const Json& object, const Place& place) {
    Item item;
    item.type = ItemType::transition;
    if (!document.mayAdd(place))
        return item;
    readCommon(document, object, place, item);
    item.transitionType = textOf(document, object, "transition_type");
    const auto in = readTime(document, object, "in_offset", place);
    const auto out = readTime(document, object, "out_offset", place);
    item.inOffset = in ? in->flicks : 0;
    item.outOffset = out ? out->flicks : 0;
    if (item.inOffset < 0 || item.outOffset < 0)
        document.fail(place, "the transition has a negative length");
    item.sourceRate = in ? in->rate : out ? out->rate : RateRead{};
    item.range = offsetsOf(document, object, place);
    item.start = -item.inOffset;
    item.duration = item.inOffset + item.outOffset;
    return item;
}

} // namespace cutroom::otio
