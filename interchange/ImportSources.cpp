#include "interchange/ImportSources.h"

#include "interchange/ImportedJson.h"
#include "platform/base/Characters.h"
#include "platform/project/LogAttribute.h"
#include "platform/project/ProjDb.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace cutroom {

namespace {

constexpr int kMostSoundChannels = 64;
constexpr double kHighestLabelRate = 120;

const char* mediumOf(ReferenceKind kind) {
    switch (kind) {
    case ReferenceKind::external:
        return "file";
    case ReferenceKind::imageSequence:
        return "image sequence";
    case ReferenceKind::generator:
        return "generator";
    case ReferenceKind::other:
        return "other";
    case ReferenceKind::none:
    case ReferenceKind::missing:
        break;
    }
    return "missing";
}

// The last segment of a URL or path, with %XX of URLs decoded when that gives text.
std::string fileNameOf(const std::string& location) {
    const auto slash = location.find_last_of("/\\");
    const std::string name = slash == std::string::npos ? location : location.substr(slash + 1);
    if (location.find("://") == std::string::npos)
        return name;
    const auto decoded = percentDecoded(name);
    return decoded && isUtf8(*decoded) ? *decoded : name;
}

std::string keyOf(std::string_view medium, std::string_view reel, std::string_view location,
                  std::string_view name) {
    std::string key;
    for (const std::string_view part : {medium, reel, location, name}) {
        key += part;
        key += '\n';
    }
    return key;
}

bool countsFrames(const Kv::FrameRate& rate) {
    return rate.valid() && rate.asDouble() <= kHighestLabelRate;
}

void widen(std::optional<Span>& whole, const Span& part) {
    if (!whole) {
        whole = part;
        return;
    }
    const Flicks end = std::max(whole->end(), part.end());
    whole->start = std::min(whole->start, part.start);
    whole->duration = end - whole->start;
}

// The media that the log stands for; never empty, whole frames long.
Span extentOf(const ImportSource& source) {
    Span span = source.available.value_or(source.used.value_or(Span{}));
    if (span.duration <= 0 && source.used)
        span = *source.used;
    const Kv::FrameRate& rate = source.rate;
    const std::int64_t nearest = rate.flicksToFrameNearest(span.duration);
    const bool enough = rate.frameToFlicks(nearest) + rate.frameToFlicks(1) / 1000 >= span.duration;
    span.duration = rate.frameToFlicks(std::max<std::int64_t>(1, enough ? nearest : nearest + 1));
    return span;
}

// One channel of a log: its material from end to end, or black where the file uses none of it.
Status layChannel(const EditPtr& log, const IdStamp& channel, const Cookie& material,
                  const ImportSource& source, const Span& extent) {
    const Kv::Ptr<Cel> cel = log->get_edit_cel_p(channel);
    CelSegment segment;
    segment.end = extent.duration;
    if (material.valid()) {
        segment.stripStart = extent.start;
        segment.material = material;
        segment.detail.name = toWide(source.name);
        segment.detail.media = toWide(source.location);
        cel->setFlags(kCelHasMaterial);
    }
    return cel->setSegments({segment});
}

Status layChannels(const EditPtr& log, const ImportSource& source, const Span& extent) {
    std::uint8_t index = 0;
    for (const IdStamp& channel : log->getChans(kChanVideo))
        if (Status laid =
                layChannel(log, channel, convertCookie(source.log, 'V', ++index), source, extent);
            !laid)
            return laid;
    index = 0;
    for (const IdStamp& channel : log->getChans(kChanAudio)) {
        const bool used = (source.audio >> index & 1) != 0;
        ++index;
        const Cookie strip = used ? convertCookie(source.log, 'S', index) : Cookie();
        if (Status laid = layChannel(log, channel, strip, source, extent); !laid)
            return laid;
    }
    for (const auto& [wanted, type] :
         {std::pair(source.subtitle, kChanSubtitle), std::pair(source.other, kChanOther)})
        if (wanted)
            if (Status laid = layChannel(log, log->addChan(type), source.log, source, extent);
                !laid)
                return laid;
    return {};
}

void describeLog(const EditPtr& log, const ImportSource& source) {
    log->setName(toWide(source.name));
    log->setLogType(kLogTypeSource);
    log->set_original_material(1);
    log->setImported(true);
    log->setVideoReelId(source.reel);
    log->setConfig(LogAttribute(LogAttribute::sourceMedium).getID(), source.medium);
    if (!source.location.empty())
        log->setMediaLocations({toWide(source.location)});
    ImportedJson json;
    json.add(kImportedKind, source.medium);
    json.addRaw(kImportedMedia, source.raw);
    log->setImportedMetadata(json.take());
}

void labelLog(const EditPtr& log, const ImportSource& source, Flicks start) {
    const TimecodeFormat format{source.rate, source.dropFrame && source.rate.allowsDropFrame()};
    log->setDropFrame(format.dropFrame);
    const std::int64_t first = source.rate.flicksToFrameNearest(start);
    if (source.video || source.audio == 0)
        log->addLabel(EditLabel(kLabelVideoTimecode, {2, 1}, format, first));
    if (source.audio != 0)
        log->addLabel(EditLabel(kLabelVideoTimecode, {4, 1}, format, first));
}

Status makeLog(ImportSource& source, std::vector<EditModifier>& made) {
    source.log = makeNewEditCookie();
    const auto sounds = static_cast<unsigned char>(std::bit_width(source.audio));
    EditModifier log = EditManager::instance().makeNewEdit(source.log, source.video ? 1 : 0, sounds,
                                                           0, source.rate);
    if (!log)
        return {StatusCode::failed, {}, "no log could be made for \"" + source.name + "\""};
    made.push_back(log);
    const Span extent = extentOf(source);
    describeLog(log, source);
    labelLog(log, source, extent.start);
    return layChannels(log, source, extent);
}

// Media time that a clip plays. The time it plays of a nested speed effect is its range's.
Span usedBy(const Item& item) {
    const double length = static_cast<double>(item.duration) * std::abs(item.speed);
    const auto limit = static_cast<double>(kMaxFlicks);
    return {item.sourceStart, static_cast<Flicks>(std::llround(std::min(length, limit)))};
}

} // namespace

int importedChannel(const Item& item, const Track& track) {
    if (item.channel.empty() || track.kind != TrackKind::audio || track.name.size() < 2)
        return 1;
    const int number = leadingInt(std::string_view(track.name).substr(1));
    return number >= 1 && number <= kMostSoundChannels ? number : 1;
}

Flicks importedStripStart(const Item& item) {
    return item.speed < 0 ? usedBy(item).end() : item.sourceStart;
}

ImportSource ImportSources::describe(const Item& item) {
    const MediaReference& media = item.media;
    ImportSource source;
    source.medium = mediumOf(media.kind);
    source.reel = media.reel;
    source.location = media.location;
    source.name = media.name;
    if (source.name.empty())
        source.name = fileNameOf(media.location);
    if (source.name.empty())
        source.name = media.reel.empty() ? item.name : media.reel;
    if (source.name.empty())
        source.name = "Untitled";
    return source;
}

void ImportSources::note(const Item& item, TrackKind kind, int channel,
                         const TimecodeFormat& record) {
    ImportSource fresh = describe(item);
    const auto [entry, isNew] = byKey_.try_emplace(
        keyOf(fresh.medium, fresh.reel, fresh.location, fresh.name), sources_.size());
    if (isNew) {
        fresh.raw = item.media.raw;
        // An event of an edit list says how its source is counted.
        fresh.dropFrame = item.channel.empty() ? record.dropFrame : item.sourceDrop;
        sources_.push_back(std::move(fresh));
    }
    ImportSource& source = sources_[entry->second];
    for (const Kv::FrameRate& candidate : {item.media.rate.rate, item.sourceRate.rate, record.rate})
        if (!countsFrames(source.rate))
            source.rate = candidate;
    if (item.media.available)
        widen(source.available, *item.media.available);
    widen(source.used, usedBy(item));
    source.video = source.video || kind == TrackKind::video;
    source.subtitle = source.subtitle || kind == TrackKind::subtitle;
    source.other = source.other || kind == TrackKind::other;
    if (kind == TrackKind::audio)
        source.audio |= std::uint64_t{1} << (channel - 1);
}

// A log that lacks a channel that is needed is not used: edits imported earlier keep their source
// as it was.
void ImportSources::findLogs() {
    const std::string medium = LogAttribute(LogAttribute::sourceMedium).getID();
    const std::string reel = LogAttribute(LogAttribute::reel).getID();
    projdb::forEach([&](const projdb::Record& record) {
        if (record.logType != kLogTypeSource)
            return true;
        const auto entry = byKey_.find(
            keyOf(record.getField(medium), record.getField(reel),
                  record.mediaLocations.empty() ? std::string() : record.mediaLocations.front(),
                  record.name()));
        if (entry == byKey_.end())
            return true;
        ImportSource& source = sources_[entry->second];
        const bool suffices =
            (!source.video || record.videoTracks > 0) && !source.subtitle && !source.other &&
            static_cast<std::uint32_t>(std::bit_width(source.audio)) <= record.audioTracks;
        if (suffices)
            source.candidates.push_back(record.cookie);
        return true;
    });
}

// A source without media is known by timecode, which means another time at another rate. The log
// may have been made for another part of the media; it is not widened, for what was cut and marked
// in it counts from its start.
Status ImportSources::chooseLog(ImportSource& source) {
    for (const Cookie& candidate : source.candidates) {
        Status why;
        const EditPtr log = EditManager::instance().open(candidate, &why);
        if (!log && why.code() != StatusCode::damaged && why.code() != StatusCode::notFound)
            return why;
        if (!log || (source.location.empty() && log->getFrameRate() != source.rate))
            continue;
        source.log = candidate;
        const Span wanted = source.available.value_or(source.used.value_or(Span{}));
        const Flicks start = toFlicks(log->getStartStripTime());
        const Flicks end = start + toFlicks(log->getEndTime() - log->getStartTime());
        shortLogs_ += wanted.start < start || wanted.end() > end;
        return {};
    }
    return {};
}

Status ImportSources::makeLogs(std::vector<EditModifier>& made, const std::function<void()>& done) {
    findLogs();
    for (ImportSource& source : sources_) {
        if (Status status = chooseLog(source); !status)
            return status;
        if (!source.log.valid())
            if (Status status = makeLog(source, made); !status)
                return status;
        done();
    }
    return {};
}

Cookie ImportSources::materialOf(const Item& item, TrackKind kind, int channel) const {
    const ImportSource wanted = describe(item);
    const auto entry = byKey_.find(keyOf(wanted.medium, wanted.reel, wanted.location, wanted.name));
    if (entry == byKey_.end())
        return {};
    const Cookie& log = sources_[entry->second].log;
    if (kind == TrackKind::video)
        return convertCookie(log, 'V', 1);
    if (kind == TrackKind::audio)
        return convertCookie(log, 'S', static_cast<std::uint8_t>(channel));
    return log;
}

} // namespace cutroom
