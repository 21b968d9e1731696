#include "interchange/OtioMedia.h"

#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace cutroom::otio {

namespace {

constexpr std::string_view kDefaultKey = "DEFAULT_MEDIA";

// base + prefix + number + suffix, the number padded with zeroes behind its sign.
std::string firstFile(const Document& document, const Json& sequence) {
    std::string path = textOf(document, sequence, "target_url_base");
    if (!path.empty() && path.back() != '/' && path.back() != '\\')
        path += '/';
    const std::int64_t number = sequence->getInt("start_frame");
    const std::int64_t padding = std::min<std::int64_t>(32, sequence->getInt("frame_zero_padding"));
    std::string digits = toText(static_cast<long long>(number));
    const std::size_t sign = number < 0 ? 1 : 0;
    while (static_cast<std::int64_t>(digits.size() - sign) < padding)
        digits.insert(sign, "0");
    return path + textOf(document, sequence, "name_prefix") + digits +
           textOf(document, sequence, "name_suffix");
}

// References under their keys, in the form of the newer clips.
std::string rawReferences(const std::vector<std::pair<std::string_view, Json>>& references,
                          std::string_view active) {
    JSON::Builder builder(JSON::Layout::compact, JSON::NonFinite::asWord);
    builder.beginObject();
    builder.beginObject("media_references");
    for (const auto& [key, reference] : references)
        if (reference)
            builder.add(key, *reference);
    builder.endObject();
    builder.add("active_media_reference_key", active);
    builder.endObject();
    return builder.take();
}

} // namespace

MediaReference readReference(Document& document, const Json& reference, const Place& place) {
    MediaReference media;
    const std::string_view schema = schemaOf(reference);
    media.name = textOf(document, reference, "name");
    if (const auto range = readRange(document, reference, "available_range", place)) {
        media.available = range->span();
        media.rate = range->start.rate;
    }
    if (schema == "ExternalReference") {
        media.kind = ReferenceKind::external;
        media.location = textOf(document, reference, "target_url");
    } else if (schema == "ImageSequenceReference") {
        media.kind = ReferenceKind::imageSequence;
        media.location = firstFile(document, reference);
        if (const Json rate = reference->find("rate"); rate && !media.rate.valid())
            if (const auto meant = Kv::FrameRate::fromDouble(rate->asDouble().value_or(0)))
                media.rate = {*meant, std::string(rate->text())};
    } else if (schema == "GeneratorReference") {
        media.kind = ReferenceKind::generator;
        media.location = textOf(document, reference, "generator_kind");
    } else {
        media.kind = schema == "MissingReference" ? ReferenceKind::missing : ReferenceKind::other;
        if (media.kind == ReferenceKind::other)
            document.warn("media references of the unknown schema \"" + std::string(schema) +
                          "\" are kept, but lead to no media");
    }
    return media;
}

MediaReference readMedia(Document& document, const Json& clip, const Place& place) {
    const Json references = document.member(clip, "media_references");
    if (!references || !references->isObject() || references->size() == 0) {
        const Json reference = document.member(clip, "media_reference");
        if (!reference)
            return {};
        MediaReference media = readReference(document, reference, place.at("media_reference"));
        media.raw = document.keep(rawReferences({{kDefaultKey, reference}}, kDefaultKey), place);
        return media;
    }
    std::string active = textOf(document, clip, "active_media_reference_key");
    if (active.empty())
        active = kDefaultKey;
    Json reference = document.member(references, active);
    if (!reference) {
        reference = document.follow(references->child(0));
        document.warn("clips name an active media reference that they do not have; the first one "
                      "is taken");
    }
    MediaReference media;
    if (reference)
        media = readReference(document, reference, place.at("media_references").at(active));
    std::vector<std::pair<std::string_view, Json>> all;
    for (const Json& child : references->children())
        all.emplace_back(child->key(), document.follow(child));
    media.raw = document.keep(rawReferences(all, active), place);
    return media;
}

double readSpeed(Document& document, const Json& item, const Place& place) {
    double speed = 1.0;
    const Json effects = document.member(item, "effects");
    if (!effects)
        return speed;
    const Place here = place.at("effects");
    std::size_t index = 0;
    for (const Json& child : effects->children()) {
        const Json effect = document.follow(child);
        const std::string_view schema = schemaOf(effect);
        const std::size_t at = index++;
        if (!effect || !effect->getBool("enabled", true))
            continue;
        if (schema == "FreezeFrame")
            speed = 0;
        if (schema != "LinearTimeWarp")
            continue;
        const double scalar = effect->getDouble("time_scalar", 1.0);
        if (!std::isfinite(scalar) || std::abs(scalar) > 1e6)
            document.fail(here.at(at), "the time scalar is no speed");
        else
            speed *= scalar;
    }
    return std::abs(speed) <= 1e6 ? speed : 1.0;
}

} // namespace cutroom::otio
