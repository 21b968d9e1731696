#include "interchange/OtioWriter.h"

#include "interchange/ImportedJson.h"
#include "interchange/OtioComposition.h"
#include "interchange/OtioLayout.h"
#include "interchange/OtioOutput.h"
#include "interchange/OtioReader.h"
#include "platform/base/Characters.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"

#include <algorithm>
#include <utility>

namespace cutroom {

namespace {

using namespace otio;

constexpr std::string_view kNoObject = "{}";
constexpr std::string_view kNoArray = "[]";

std::string_view schemaName(std::string_view schema) { return schema.substr(0, schema.rfind('.')); }

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), toCapital);
    return text;
}

bool isSpeed(std::string_view effect) {
    const std::string schema = importedText(effect, "OTIO_SCHEMA");
    return schemaName(schema) == "LinearTimeWarp" || schemaName(schema) == "FreezeFrame";
}

// The speed that kept effects make, as the reader has it.
double speedOf(std::string_view effects) {
    double speed = 1;
    forEachImportedEntry(effects, [&](std::string_view effect) {
        if (!isSpeed(effect) || importedMember(effect, "enabled") == "false")
            return;
        const std::string schema = importedText(effect, "OTIO_SCHEMA");
        speed = schemaName(schema) == "FreezeFrame"
                    ? 0
                    : speed * importedNumber(effect, "time_scalar").value_or(1);
    });
    return speed;
}

// Tells whether a nested timeline, or the root, can be written as the one thing that it was.
bool isStillTrack(const Timeline& timeline) {
    return (schemaName(timeline.source) == "Track" || schemaName(timeline.source) == "Sequence") &&
           timeline.tracks.size() == 1;
}

bool isStillItem(const Timeline& timeline) {
    const std::string_view schema = schemaName(timeline.source);
    return (schema == "Clip" || schema == "Gap") && timeline.tracks.size() == 1 &&
           timeline.tracks.front().items.size() == 1 &&
           timeline.tracks.front().items.front().type != ItemType::transition &&
           timeline.tracks.front().items.front().start == 0;
}

class Writer {
public:
    void root(const Timeline& timeline) {
        const bool plain = !timeline.startFrame && !needsOwnMetadata(timeline);
        const LaidStack stack = laidOut(timeline);
        const bool alone = plain && stack.markers.empty() && stack.tracks.size() == 1;
        if (alone && isStillItem(timeline) && stack.tracks.front().markers.empty()) {
            child(timeline, stack, stack.tracks.front().children.front());
        } else if (alone && isStillTrack(timeline)) {
            track(timeline, stack, stack.tracks.front(), timeline.name);
        } else if (plain && schemaName(timeline.source) == "Stack") {
            out_.beginObject("Stack.1");
            stackMembers(timeline, stack, timeline.name, timeline.metadata, timeline.extra);
            out_.endObject();
        } else {
            whole(timeline, stack);
        }
    }

    OtioText take() {
        OtioText result{out_.take(), {}};
        const auto say = [&](std::size_t times, const char* what) {
            if (times > 0)
                result.warnings.push_back(std::string(what) + ": " +
                                          toText(static_cast<unsigned long long>(times)));
        };
        say(outside_, "markers outside of the timeline, which others may place elsewhere");
        say(shortened_, "transitions longer than what lies beside them, shortened");
        return result;
    }

private:
    LaidStack laidOut(const Timeline& timeline) {
        LaidStack stack = layOut(timeline);
        outside_ += stack.outside;
        shortened_ += stack.shortened;
        return stack;
    }

    // Only where the start does not tell that labels are counted in drop frame.
    static bool needsOwnMetadata(const Timeline& timeline) {
        const bool told =
            timeline.startFrame && meansDropFrame(*timeline.startFrame, timeline.rate.rate);
        return told != (timeline.dropFrame && timeline.rate.rate.allowsDropFrame());
    }

    void whole(const Timeline& timeline, const LaidStack& stack) {
        out_.beginObject("Timeline.1");
        out_.add("name", timeline.name);
        if (needsOwnMetadata(timeline)) {
            out_.beginObject("metadata", {});
            out_.addRaw(kOwnMetadata, std::string("{\"") + kOwnDropFrame +
                                          "\": " + (timeline.dropFrame ? "true}" : "false}"));
            out_.addMembers(timeline.metadata);
            out_.endObject();
        } else {
            out_.addRaw("metadata", timeline.metadata, kNoObject);
        }
        // What nobody read from a file starts at 0: some programs insist on a start.
        std::string start;
        if (timeline.startFrame)
            start = timeText(timeline.startWritten, timeline.startRate);
        else if (timeline.source.empty())
            start = timeText(0.0, timeline.rate);
        out_.addRaw("global_start_time", start);
        // The kept members of the stack, which was inside a timeline or the root itself.
        const bool isTimeline = schemaName(timeline.source) == "Timeline";
        std::string_view inner;
        if (isTimeline)
            inner = importedMember(timeline.extra, "tracks");
        else if (schemaName(timeline.source) == "Stack")
            inner = timeline.extra;
        forEachImported(timeline.extra, [&](std::string_view key, std::string_view text) {
            if (isTimeline && key != "tracks")
                out_.addRaw(key, text);
        });
        out_.beginObject("tracks", "Stack.1");
        const std::string name = isTimeline ? importedText(inner, "name") : "tracks";
        stackMembers(timeline, stack, name, importedMember(inner, "metadata"), inner);
        out_.endObject();
        out_.endObject();
    }

    // The members of a stack whose own ones, effects and enabled among them, are in `extra`.
    void stackMembers(const Timeline& timeline, const LaidStack& stack, const std::string& name,
                      std::string_view metadata, std::string_view extra) {
        out_.add("name", name);
        out_.addRaw("metadata", metadata, kNoObject);
        out_.addRaw("source_range", {});
        out_.addRaw("effects", importedMember(extra, "effects"), kNoArray);
        out_.addRaw("enabled", importedMember(extra, "enabled"), "true");
        forEachImported(extra, [&](std::string_view key, std::string_view text) {
            if (key != "name" && key != "metadata" && key != "effects" && key != "enabled")
                out_.addRaw(key, text);
        });
        markers(timeline, stack, stack.markers);
        tracks(timeline, stack);
    }

    void tracks(const Timeline& timeline, const LaidStack& stack) {
        out_.beginArray("children");
        for (const LaidTrack& each : stack.tracks)
            if (each.track->alone && each.children.size() == 1 && each.markers.empty())
                child(timeline, stack, each.children.front());
            else
                track(timeline, stack, each, each.track->name);
        out_.endArray();
    }

    void track(const Timeline& timeline, const LaidStack& stack, const LaidTrack& laid,
               const std::string& name) {
        const Track& own = *laid.track;
        out_.beginObject("Track.1");
        out_.add("name", name);
        out_.addRaw("metadata", own.metadata, kNoObject);
        out_.addRaw("source_range", {});
        out_.addRaw("effects", own.effects, kNoArray);
        out_.addBool("enabled", own.enabled);
        out_.add("kind", own.kindText);
        out_.addMembers(own.extra);
        markers(timeline, stack, laid.markers);
        children(timeline, stack, laid);
        out_.endObject();
    }

    void children(const Timeline& timeline, const LaidStack& stack, const LaidTrack& laid) {
        out_.beginArray("children");
        for (const Child& each : laid.children)
            child(timeline, stack, each);
        out_.endArray();
    }

    void child(const Timeline& timeline, const LaidStack& stack, const Child& child) {
        static const Item kHole = [] {
            Item hole;
            hole.type = ItemType::gap;
            return hole;
        }();
        const Item& item = child.item ? *child.item : kHole;
        if (item.type == ItemType::transition)
            return transition(item, child);
        if (item.type == ItemType::nested)
            return nested(timeline, stack, item, child);
        // A thing of a schema that the reader does not know is all in what it kept.
        const bool unknown = !importedMember(item.extra, "OTIO_SCHEMA").empty();
        if (unknown && child.asWritten)
            return out_.addRaw(item.extra);
        out_.beginObject(item.type == ItemType::clip ? "Clip.2" : "Gap.1");
        common(item, unknown ? std::string_view() : item.extra);
        range(item, child);
        effects(item);
        markers(timeline, stack, child.markers);
        if (item.type == ItemType::clip)
            media(item.media, child.rate);
        out_.endObject();
    }

    void common(const Item& item, std::string_view extra) {
        out_.add("name", item.name);
        out_.addRaw("metadata", item.metadata, kNoObject);
        out_.addBool("enabled", item.enabled);
        out_.addMembers(extra);
    }

    void range(const Item& item, const Child& child) {
        if (child.asWritten)
            out_.addRaw("source_range", item.range);
        else
            out_.addRange("source_range", {child.sourceStart, child.duration}, child.rate);
    }

    // The kept effects, with the speed that the item has now.
    void effects(const Item& item) {
        const bool playing = item.type == ItemType::clip || item.type == ItemType::nested;
        if (!playing || speedOf(item.effects) == item.speed) {
            out_.addRaw("effects", item.effects, kNoArray);
            return;
        }
        out_.beginArray("effects");
        forEachImportedEntry(item.effects, [this](std::string_view effect) {
            if (!isSpeed(effect))
                out_.addRaw(effect);
        });
        if (item.speed != 1) {
            const char* const name = item.speed == 0 ? "FreezeFrame" : "LinearTimeWarp";
            out_.beginObject(std::string(name) + ".1");
            out_.add("name", std::string_view());
            out_.addRaw("metadata", kNoObject);
            out_.add("effect_name", name);
            out_.add("time_scalar", item.speed);
            out_.endObject();
        }
        out_.endArray();
    }

    void media(const MediaReference& media, const RateRead& rate) {
        const std::string_view kept = importedMember(media.raw, "media_references");
        if (!kept.empty()) {
            out_.addRaw("media_references", kept);
            out_.addRaw("active_media_reference_key",
                        importedMember(media.raw, "active_media_reference_key"));
            return;
        }
        out_.addRaw("media_references", R"({"DEFAULT_MEDIA":)" + referenceText(media, rate) + '}');
        out_.add("active_media_reference_key", "DEFAULT_MEDIA");
    }

    // A reference made from what the project knows.
    static std::string referenceText(const MediaReference& media, const RateRead& rate) {
        const bool generator = media.kind == ReferenceKind::generator;
        const bool missing = media.location.empty() && !generator;
        JSON::Builder name(JSON::Layout::compact);
        name.add(media.name);
        JSON::Builder location(JSON::Layout::compact);
        location.add(media.location);
        std::string text = R"({"OTIO_SCHEMA":")";
        text += generator ? "GeneratorReference.1"
                : missing ? "MissingReference.1"
                          : "ExternalReference.1";
        text += R"(","name":)" + name.take() + R"(,"metadata":{},"available_range":)";
        text += media.available
                    ? rangeText(*media.available, media.rate.valid() ? media.rate : rate)
                    : "null";
        text += R"(,"available_image_bounds":null)";
        if (generator)
            text += R"(,"generator_kind":)" + location.take() + R"(,"parameters":{})";
        else if (!missing)
            text += R"(,"target_url":)" + location.take();
        return text + '}';
    }

    // What an item plays that is a timeline itself: a track where it was one, else a stack.
    void nested(const Timeline& timeline, const LaidStack& stack, const Item& item,
                const Child& child) {
        const Timeline& inside = timeline.nested[static_cast<std::size_t>(item.nested)];
        const LaidStack laid = laidOut(inside);
        const bool isTrack = isStillTrack(inside) && laid.markers.empty();
        out_.beginObject(isTrack ? "Track.1" : "Stack.1");
        common(item, item.extra);
        if (child.sourceStart == 0 && child.duration == inside.duration)
            out_.addRaw("source_range", {});
        else
            out_.addRange("source_range", {child.sourceStart, child.duration}, child.rate);
        effects(item);
        std::vector<const Marker*> own = child.markers;
        if (isTrack) {
            out_.add("kind", laid.tracks.front().track->kindText);
            nestedMarkers(timeline, stack, own, inside, laid, laid.tracks.front().markers);
            children(inside, laid, laid.tracks.front());
        } else {
            nestedMarkers(timeline, stack, own, inside, laid, laid.markers);
            tracks(inside, laid);
        }
        out_.endObject();
    }

    // Those that the outer timeline has on the item, then those of the inside.
    void nestedMarkers(const Timeline& outer, const LaidStack& outerStack,
                       const std::vector<const Marker*>& ofItem, const Timeline& inner,
                       const LaidStack& innerStack, const std::vector<const Marker*>& ofInside) {
        out_.beginArray("markers");
        for (const Marker* each : ofItem)
            marker(*each, outerStack.times[static_cast<std::size_t>(each - outer.markers.data())]);
        for (const Marker* each : ofInside)
            marker(*each, innerStack.times[static_cast<std::size_t>(each - inner.markers.data())]);
        out_.endArray();
    }

    void markers(const Timeline& timeline, const LaidStack& stack,
                 const std::vector<const Marker*>& all) {
        out_.beginArray("markers");
        for (const Marker* each : all)
            marker(*each, stack.times[static_cast<std::size_t>(each - timeline.markers.data())]);
        out_.endArray();
    }

    void marker(const Marker& marker, const MarkerTimes& times) {
        out_.beginObject("Marker.2");
        out_.add("name", marker.name);
        markerMetadata(marker);
        if (marker.colourText.empty())
            out_.addRaw("color", {});
        else
            out_.add("color", colourText(marker));
        if (times.asWritten)
            out_.addRaw("marked_range", marker.range);
        else
            out_.addRange("marked_range", times.range, times.rate);
        out_.add("comment", marker.comment);
        out_.addMembers(marker.extra);
        out_.endObject();
    }

    void markerMetadata(const Marker& marker) {
        if (marker.fields.empty())
            return out_.addRaw("metadata", marker.metadata, kNoObject);
        JSON::Builder own(JSON::Layout::compact);
        own.beginObject();
        own.beginObject(kOwnFields);
        for (const auto& [key, value] : marker.fields)
            own.add(key, value);
        own.endObject();
        own.endObject();
        out_.beginObject("metadata", {});
        out_.addRaw(kOwnMetadata, own.take());
        forEachImported(marker.metadata, [this](std::string_view key, std::string_view text) {
            if (key != kOwnMetadata)
                out_.addRaw(key, text);
        });
        out_.endObject();
    }

    // Names that were not read from a file are in capitals by custom.
    static std::string colourText(const Marker& marker) {
        return marker.range.empty() ? upper(marker.colourText) : marker.colourText;
    }

    void transition(const Item& item, const Child& child) {
        out_.beginObject("Transition.1");
        out_.add("name", item.name);
        out_.addRaw("metadata", item.metadata, kNoObject);
        out_.addBool("enabled", item.enabled);
        out_.add("transition_type", item.transitionType);
        if (child.asWritten) {
            out_.addRaw("in_offset", importedMember(item.range, "in_offset"));
            out_.addRaw("out_offset", importedMember(item.range, "out_offset"));
        } else {
            out_.addTime("in_offset", child.sourceStart, child.rate);
            out_.addTime("out_offset", child.duration - child.sourceStart, child.rate);
        }
        if (!item.effects.empty())
            out_.addRaw("effects", item.effects);
        out_.addMembers(item.extra);
        out_.endObject();
    }

    Output out_;
    std::size_t outside_ = 0;
    std::size_t shortened_ = 0;
};

} // namespace

OtioText writeOtio(const Timeline& timeline) {
    Writer writer;
    writer.root(timeline);
    return writer.take();
}

} // namespace cutroom
