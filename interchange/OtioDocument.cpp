#include "interchange/OtioDocument.h"

#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cutroom::otio {

namespace {

constexpr std::size_t kMaxWarnings = 100;

} // namespace

std::string_view schemaOf(const Json& object) {
    const Json schema = object ? object->find("OTIO_SCHEMA") : Json();
    if (!schema || !schema->isString())
        return {};
    const std::string_view text = schema->text();
    const std::string_view name = text.substr(0, text.rfind('.'));
    if (name == "Sequence")
        return "Track";
    if (name == "Filler")
        return "Gap";
    if (name == "SerializeableCollection")
        return "SerializableCollection";
    return name;
}

std::string Place::text() const {
    if (!above)
        return "the root";
    std::string path = above->above ? above->text() : std::string();
    if (key.empty())
        return path + "[" + toText(static_cast<unsigned long long>(index)) + "]";
    if (!path.empty())
        path += '.';
    return path.append(key);
}

Document::Document(Json root, std::string file, std::string_view bytes)
    : root_(std::move(root)), file_(std::move(file)), itemsLeft_(bytes.size() / 64 + 1000),
      textLeft_(bytes.size() * 4 + 4096) {
    if (bytes.find("\"OTIO_REF_ID\"") != bytes.npos)
        collectReferences(root_);
}

std::string Document::raw(const Json& value, const Place& place) {
    if (!value || value->kind() == JSON::Kind::null ||
        ((value->isObject() || value->isArray()) && value->size() == 0))
        return {};
    JSON::Builder builder(JSON::Layout::compact, JSON::NonFinite::asWord);
    builder.add(*value);
    return keep(builder.take(), place);
}

std::string Document::keep(std::string text, const Place& place) {
    if (text.size() > textLeft_) {
        fail(place, "references repeat more than the file can hold");
        return {};
    }
    textLeft_ -= text.size();
    return text;
}

void Document::fail(const Place& place, const std::string& reason) {
    if (!failed())
        failure_ = Status(StatusCode::damaged, file_, place.text() + ": " + reason);
}

void Document::warn(const std::string& text) {
    if (warnings_.size() < kMaxWarnings &&
        std::find(warnings_.begin(), warnings_.end(), text) == warnings_.end())
        warnings_.push_back(text);
}

bool Document::mayAdd(const Place& place) {
    if (itemsLeft_ == 0) {
        fail(place, "more things than a file of this size can hold; do references repeat them?");
        return false;
    }
    --itemsLeft_;
    return !failed();
}

void Document::collectReferences(const Json& value) {
    if (value->isObject())
        if (const Json id = value->find("OTIO_REF_ID"); id && id->isString())
            byId_.emplace(id->text(), value);
    for (const Json& child : value->children())
        if (child->isObject() || child->isArray())
            collectReferences(child);
}

Json Document::follow(Json value) const {
    if (!value || value->kind() == JSON::Kind::null)
        return {};
    if (schemaOf(value) != "SerializableObjectRef")
        return value;
    const Json id = value->find("id");
    const auto found = id ? byId_.find(id->text()) : byId_.end();
    return found == byId_.end() ? Json() : found->second;
}

Json Document::member(const Json& object, std::string_view key) const {
    return object ? follow(object->find(key)) : Json();
}

std::optional<Time> readTime(Document& document, const Json& object, std::string_view key,
                             const Place& place) {
    const Json read = document.member(object, key);
    if (!read)
        return {};
    const Place here = place.at(key);
    const Json value = read->find("value");
    const Json rate = read->find("rate");
    const auto number = value ? value->asDouble() : std::nullopt;
    const auto perSecond = rate ? rate->asDouble() : std::nullopt;
    if (!number || !perSecond) {
        document.fail(here, "a time needs a value and a rate");
        return Time{};
    }
    const auto meant = Kv::FrameRate::fromDouble(*perSecond);
    if (!meant || !meant->valid()) {
        document.fail(here, "the rate " + std::string(rate->text()) + " is none");
        return Time{};
    }
    const long double seconds = static_cast<long double>(*number) * meant->den() / meant->num();
    if (!std::isfinite(*number) || !isStorableTime(static_cast<double>(seconds))) {
        document.fail(here, "the time " + std::string(value->text()) + " is none");
        return Time{};
    }
    return Time{*number,
                {*meant, std::string(rate->text())},
                static_cast<Flicks>(std::llround(seconds * kFlicksPerSecond))};
}

std::optional<Range> readRange(Document& document, const Json& object, std::string_view key,
                               const Place& place) {
    const Json read = document.member(object, key);
    if (!read)
        return {};
    const Place here = place.at(key);
    const auto start = readTime(document, read, "start_time", here);
    const auto duration = readTime(document, read, "duration", here);
    if (!duration) {
        document.fail(here, "a range needs a duration");
        return Range{};
    }
    if (duration->flicks < 0)
        document.fail(here, "the duration is negative");
    return Range{start ? *start : Time{0, duration->rate, 0}, *duration};
}

std::string otherMembers(Document& document, const Json& object, const Place& place,
                         std::initializer_list<std::string_view> known) {
    JSON::Builder builder(JSON::Layout::compact, JSON::NonFinite::asWord);
    builder.beginObject();
    bool any = false;
    for (const Json& member : object->children()) {
        if (std::find(known.begin(), known.end(), member->key()) != known.end())
            continue;
        builder.add(member->key(), *member);
        any = true;
    }
    builder.endObject();
    return any ? document.keep(builder.take(), place) : std::string();
}

std::string textOf(const Document& document, const Json& object, std::string_view key) {
    const Json text = document.member(object, key);
    return text && text->isString() ? std::string(text->text()) : std::string();
}

} // namespace cutroom::otio
