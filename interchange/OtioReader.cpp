#include "interchange/OtioReader.h"

#include "interchange/OtioComposition.h"
#include "interchange/OtioDocument.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/files/JsonBuilder.h"

#include <utility>

namespace cutroom {

namespace {

using namespace otio;

constexpr std::uint64_t kMaxOtioBytes = std::uint64_t{512} << 20;

// What the root stack says besides its children, kept for writing it back.
std::string extraOf(Document& document, const Json& timeline, const Place& place) {
    const Json stack = document.member(timeline, "tracks");
    JSON::Builder builder(JSON::Layout::compact, JSON::NonFinite::asWord);
    builder.beginObject();
    bool any = false;
    for (const Json& member : timeline->children()) {
        const std::string_view key = member->key();
        if (key == "OTIO_SCHEMA" || key == "OTIO_REF_ID" || key == "name" || key == "metadata" ||
            key == "tracks" || key == "global_start_time")
            continue;
        builder.add(key, *member);
        any = true;
    }
    if (schemaOf(stack) == "Stack") {
        builder.beginObject("tracks");
        for (const Json& member : stack->children())
            if (const auto key = member->key(); key != "OTIO_SCHEMA" && key != "OTIO_REF_ID" &&
                                                key != "children" && key != "markers" &&
                                                key != "source_range") {
                builder.add(key, *member);
                any = true;
            }
        builder.endObject();
    }
    builder.endObject();
    return any ? document.keep(builder.take(), place) : std::string();
}

Timeline readTimeline(Document& document, const Json& object, const Place& place) {
    const auto start = readTime(document, object, "global_start_time", place);
    Timeline timeline =
        readComposition(document, object, place, "stack", start ? &*start : nullptr);
    timeline.extra = extraOf(document, object, place);
    return timeline;
}

// The free metadata, without what our own writer adds to it: whether labels are drop frame.
void readMetadata(Document& document, const Json& object, const Place& place, Timeline& timeline) {
    const Json metadata = document.member(object, "metadata");
    const Json own = metadata && metadata->isObject() ? metadata->find(kOwnMetadata) : Json();
    if (!own || !own->isObject()) {
        timeline.metadata = document.raw(object->find("metadata"), place);
        return;
    }
    timeline.dropFrame =
        own->getBool(kOwnDropFrame, timeline.dropFrame) && timeline.rate.rate.allowsDropFrame();
    timeline.metadata = otherMembers(document, metadata, place, {kOwnMetadata});
}

// Reads what can be played at the root or in a collection. Other things are left out with a
// warning.
void readPlayable(Document& document, const Json& object, const Place& place, int depth,
                  std::vector<Timeline>& timelines);

void readCollection(Document& document, const Json& object, const Place& place, int depth,
                    std::vector<Timeline>& timelines) {
    const Json children = document.member(object, "children");
    const Place here = place.at("children");
    std::size_t index = 0;
    for (const Json& child : children ? children->children() : std::vector<Json>()) {
        const Place at = here.at(index++);
        if (document.failed() || !document.mayAdd(at))
            return;
        if (const Json read = document.follow(child))
            readPlayable(document, read, at, depth + 1, timelines);
    }
}

void readPlayable(Document& document, const Json& object, const Place& place, int depth,
                  std::vector<Timeline>& timelines) {
    const std::string_view schema = schemaOf(object);
    if (schema == "SerializableCollection" && depth < 64)
        return readCollection(document, object, place, depth, timelines);
    const bool playable = schema == "Timeline" || schema == "Clip" || schema == "Stack" ||
                          schema == "Track" || schema == "Gap";
    if (!playable) {
        document.warn("a collection holds things that cannot be played (schema \"" +
                      std::string(schema) + "\"), left out");
        return;
    }
    Timeline timeline = schema == "Timeline"
                            ? readTimeline(document, object, place)
                            : readComposition(document, object, place, "root", nullptr);
    timeline.owner = schema == "Timeline" ? "stack" : "root";
    if (schema == "Stack")
        timeline.extra = otherMembers(document, object, place,
                                      {"OTIO_SCHEMA", "OTIO_REF_ID", "name", "metadata", "children",
                                       "markers", "source_range"});
    timeline.name = textOf(document, object, "name");
    timeline.source = textOf(document, object, "OTIO_SCHEMA");
    readMetadata(document, object, place, timeline);
    if (document.failed())
        return;
    roundToFrames(timeline);
    timelines.push_back(std::move(timeline));
}

JSON::ReadOptions readOptions() {
    JSON::ReadOptions options;
    options.tolerant = true;
    options.maxBytes = kMaxOtioBytes;
    return options;
}

} // namespace

Result<std::vector<Timeline>> readOtio(std::string_view bytes, const std::string& file) {
    auto root = JSON::Element::parse(bytes, file, readOptions());
    if (!root)
        return root.status();
    if (schemaOf(*root).empty())
        return Status(StatusCode::damaged, file, "the root has no OTIO_SCHEMA: no OTIO file", 1);
    Document document(*root, file, bytes);
    std::vector<Timeline> timelines;
    const Place place;
    readPlayable(document, document.root(), place, 0, timelines);
    if (document.failed())
        return document.failure();
    if (timelines.empty())
        return Status(StatusCode::damaged, file,
                      "the root is a " + std::string(schemaOf(*root)) +
                          " with nothing in it that can be played",
                      1);
    for (const std::string& warning : document.takeWarnings())
        addWarning(timelines.front(), warning);
    return timelines;
}

Result<std::vector<Timeline>> readOtioFile(const std::string& path) {
    auto bytes = readFile(path, kMaxOtioBytes);
    if (!bytes)
        return bytes.status();
    return readOtio(*bytes, path);
}

} // namespace cutroom
