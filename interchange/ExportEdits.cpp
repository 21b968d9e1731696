#include "interchange/ExportEdits.h"

#include "interchange/ExportSources.h"
#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

namespace cutroom {

namespace {

constexpr std::size_t kMaxLevels = 64;
constexpr std::size_t kMaxItems = 4'000'000;

// The mix of an edit that nobody has mixed, with its stereo pairs panned apart, as new edits have.
Aud::SimpleMixState pairedMix(const Edit& edit, std::size_t inputs) {
    Aud::SimpleMixState mix(inputs);
    const auto groups = edit.openObjectInternal();
    for (std::size_t i = 0; i < groups->size(); ++i) {
        const std::vector<IdStamp> pair = groups->getGroupContents(i);
        for (std::size_t side = 0; side < 2 && pair.size() == 2; ++side)
            if (edit.getChanType(pair[side]) == kChanAudio)
                mix.setInputPan(static_cast<unsigned char>(edit.getIndexWithinType(pair[side])),
                                side == 0 ? 0.0F : 1.0F);
    }
    return mix;
}

// What an edit holds, taken at one moment: events are shared, not copied.
struct Moment {
    struct Channel {
        EditChanType type = kChanVideo;
        std::string name; // the user's own
        std::string shown;
        std::string metadata;
        Kv::Ptr<Cel> cel;
    };
    std::string name;
    Kv::FrameRate rate;
    bool dropFrame = false;
    Flicks start = 0;
    Flicks end = 0;
    EditLabel label;
    std::string metadata;
    bool mixed = false; // otherwise than by default
    std::vector<Cue> cues;
    std::vector<Channel> channels;
    std::unordered_map<IdStamp, EffectGraph> graphs;

    explicit Moment(const Edit& edit) {
        const Edit::Lock lock(edit);
        name = toUtf8(edit.getName());
        rate = edit.getFrameRate();
        dropFrame = edit.getDropFrame();
        start = toFlicks(edit.getStartTime());
        end = toFlicks(edit.getEndTime());
        label = edit.getVideoTimecodeLabel();
        metadata = edit.getImportedMetadata();
        if (const auto mix = edit.getAudioMix(); mix && mix->valid())
            mixed = *mix != Aud::SimpleMixState(mix->numInputs()) &&
                    *mix != pairedMix(edit, mix->numInputs());
        cues = edit.getCues().cues();
        for (const IdStamp& id : edit.getChans(kChanAllTypes & ~static_cast<unsigned>(kChanLevels),
                                               kSubAll & ~static_cast<unsigned>(kSubDerived)))
            channels.push_back({edit.getChanType(id), toUtf8(edit.getChanUserName(id)),
                                toUtf8(edit.getChanDisplayName(id)), edit.getChanMetadata(id),
                                edit.get_edit_cel_p(id)->copy()});
        for (EffectGraph& graph : edit.getEffectGraphs())
            graphs.emplace(graph.id, std::move(graph));
    }
};

RateRead rateRead(const std::string& text) {
    const auto rate = Kv::FrameRate::fromString(text);
    if (!rate)
        return {};
    return {*rate, text.find('/') == text.npos ? text : std::string()};
}

TrackKind kindOf(EditChanType type) {
    switch (type) {
    case kChanVideo:
        return TrackKind::video;
    case kChanAudio:
        return TrackKind::audio;
    case kChanSubtitle:
        return TrackKind::subtitle;
    default:
        return TrackKind::other;
    }
}

std::string kindText(const std::string& imported, TrackKind kind, const std::string& shown) {
    if (!imported.empty() && trackKind(imported) == kind)
        return imported;
    switch (kind) {
    case TrackKind::video:
        return "Video";
    case TrackKind::audio:
        return "Audio";
    case TrackKind::subtitle:
        return "Subtitle";
    case TrackKind::other:
        break;
    }
    return shown;
}

MarkerPlacement placementOf(const std::string& text) {
    if (text == "from first frame")
        return MarkerPlacement::fromFirstFrame;
    if (text == "record timecode")
        return MarkerPlacement::recordTimecode;
    return text == "outside" ? MarkerPlacement::outside : MarkerPlacement::asMeant;
}

// The colour as written while it is still that colour; the same where none was written.
std::string colourOf(const Cue& cue, std::string written) {
    constexpr std::uint32_t kDefault = 0xFFFFFF;
    const auto meant = markerColour(written);
    const bool imported = !cue.getImportedMetadata().empty();
    if (meant ? *meant == cue.getColour() : imported && cue.getColour() == kDefault)
        return written;
    return markerColourName(cue.getColour());
}

Marker markerOf(const Cue& cue, Flicks start) {
    const std::string& imported = cue.getImportedMetadata();
    Marker marker;
    marker.name = toUtf8(cue.getName());
    marker.comment = toUtf8(cue.getDescription());
    marker.start = toFlicks(cue.getTime()) - start;
    if (cue.hasEnd())
        marker.duration = toFlicks(cue.getEndTime()) - start - marker.start;
    marker.colour = cue.getColour();
    marker.colourText = colourOf(cue, importedText(imported, kImportedColour));
    marker.owner = importedText(imported, kImportedOwner);
    marker.placement = placementOf(importedText(imported, kImportedPlacement));
    marker.rate = rateRead(importedText(imported, kImportedRate));
    marker.metadata = importedMember(imported, kImportedMetadata);
    marker.extra = importedMember(imported, kImportedExtra);
    marker.range = importedMember(imported, kImportedRange);
    for (const auto& [key, value] : cue.getCustomMetadata())
        marker.fields.emplace_back(key, toUtf8(value));
    return marker;
}

class Describer {
public:
    Result<Timeline> describe(const EditPtr& edit) {
        if (std::find(path_.begin(), path_.end(), edit.getCookie()) != path_.end())
            return Status(StatusCode::failed, toUtf8(edit->getName()), "is nested in itself");
        if (path_.size() == kMaxLevels)
            return Status(StatusCode::failed, toUtf8(edit->getName()),
                          "edits inside one another too deep");
        path_.push_back(edit.getCookie());
        const Moment moment(*edit);
        mixes_ += moment.mixed;
        Timeline timeline = outline(moment);
        Status status;
        for (const Moment::Channel& channel : moment.channels)
            if (status.ok())
                status = addTrack(moment, channel, timeline);
        path_.pop_back();
        if (!status)
            return status;
        // Picture and sound may have stood between one another.
        int place = -1;
        for (Track& track : timeline.tracks)
            place = track.place = track.place < 0 ? place : track.place;
        std::stable_sort(timeline.tracks.begin(), timeline.tracks.end(),
                         [](const Track& a, const Track& b) { return a.place < b.place; });
        return timeline;
    }

    std::vector<std::string> warnings() const {
        std::vector<std::string> all;
        if (subtitles_ > 0)
            all.push_back("subtitles left out, which have a format of their own (srt): " +
                          toText(static_cast<long long>(subtitles_)));
        if (mixes_ > 0)
            all.push_back("the audio mix is left out; `cutroom mix EDIT save FILE` writes it");
        if (unknown_ > 0)
            all.push_back("clips whose source the project does not have, written as missing: " +
                          toText(static_cast<long long>(unknown_)));
        return all;
    }

private:
    static Timeline outline(const Moment& moment) {
        Timeline timeline;
        timeline.name = moment.name;
        timeline.source = importedText(moment.metadata, kImportedSchema);
        timeline.owner = importedText(moment.metadata, kImportedOwner);
        timeline.metadata = importedMember(moment.metadata, kImportedMetadata);
        timeline.extra = importedMember(moment.metadata, kImportedExtra);
        timeline.rate = rateRead(importedText(moment.metadata, kImportedRate));
        if (timeline.rate.rate != moment.rate)
            timeline.rate = {moment.rate, {}};
        timeline.dropFrame = moment.dropFrame;
        timeline.duration = moment.end - moment.start;
        if (moment.label.is_valid())
            takeStart(moment, timeline);
        else if (moment.start > 0) // what is shown of the edit counts from time 0 then
            setStart(timeline, moment.rate.flicksToFrameNearest(moment.start), timeline.rate);
        for (const Cue& cue : moment.cues)
            if (!cue.hasFlag(kCueTransient))
                timeline.markers.push_back(markerOf(cue, moment.start));
        return timeline;
    }

    static void setStart(Timeline& timeline, std::int64_t frame, const RateRead& rate) {
        timeline.startFrame = frame;
        timeline.startWritten = static_cast<double>(frame);
        timeline.startRate = rate;
    }

    // The start of the edit by its label, which may count at another rate: the same hours, minutes
    // and seconds, as the reader has it. Written as it was while it means the same.
    static void takeStart(const Moment& moment, Timeline& timeline) {
        const TimecodeFormat& format = moment.label.format();
        const double nominal = timeline.rate.rate.nominal();
        const auto meant = [&](double value, const Kv::FrameRate& rate) {
            return std::llround(value / rate.nominal() * nominal);
        };
        const std::int64_t frame =
            moment.label.get_abs_posn(format.rate.flicksToFrameNearest(moment.start));
        timeline.startFrame = meant(static_cast<double>(frame), format.rate);
        timeline.dropFrame = format.dropFrame;
        const std::string_view written = importedMember(moment.metadata, kImportedStart);
        timeline.startWritten = importedNumber(written, kImportedValue).value_or(0);
        timeline.startRate = rateRead(importedText(written, kImportedRate));
        if (timeline.startRate.valid() &&
            meant(timeline.startWritten, timeline.startRate.rate) == *timeline.startFrame)
            return;
        timeline.startWritten = static_cast<double>(frame);
        timeline.startRate = format.rate == moment.rate ? timeline.rate : RateRead{format.rate, {}};
    }

    Status addTrack(const Moment& moment, const Moment::Channel& channel, Timeline& timeline) {
        Track track;
        track.kind = kindOf(channel.type);
        const std::string& imported = channel.metadata;
        const bool isImported = !imported.empty();
        track.kindText = kindText(importedText(imported, kImportedKind), track.kind, channel.shown);
        track.name = isImported ? channel.name : channel.shown;
        // A disabled track is one all of whose clips are disabled.
        track.enabled =
            importedMember(imported, kImportedEnabled) != "false" || hasEnabledClip(*channel.cel);
        track.place = static_cast<int>(importedNumber(imported, kImportedPlace).value_or(-1));
        track.alone = importedMember(imported, kImportedAlone) == "true";
        track.metadata = importedMember(imported, kImportedMetadata);
        track.effects = importedMember(imported, kImportedEffects);
        track.extra = importedMember(imported, kImportedExtra);
        const std::uint32_t count = channel.cel->numSegments();
        track.items.reserve(count + 2);
        bool texts = false;
        if (Status status = addItems(moment, *channel.cel, timeline, track, texts); !status)
            return status;
        if (texts && !isImported) // nothing but subtitles
            return {};
        if (!isImported && count == 0 && track.kind != TrackKind::video)
            return {};
        timeline.tracks.push_back(std::move(track));
        return {};
    }

    static bool hasEnabledClip(const Cel& cel) {
        for (std::uint32_t i = 0; i < cel.get_num_events(); i += 2) {
            const ChannelEvent event = cel.get_event(i);
            if (event.material.valid() && (event.flags & kEventDisabled) == 0)
                return true;
        }
        return false;
    }

    Status addItems(const Moment& moment, const Cel& cel, Timeline& timeline, Track& track,
                    bool& texts) {
        const std::uint32_t count = cel.numSegments();
        for (std::uint32_t i = 0; i < count; ++i) {
            const CelSegment segment = cel.getSegment(i);
            texts = texts || !segment.detail.lines.empty();
            addTransition(moment, segment.inGraph, segment.start, track);
            if (!isPadding(moment, cel, i, segment)) {
                if (++items_ > kMaxItems)
                    return {StatusCode::failed, moment.name, "more than four million items"};
                Item item;
                item.start = segment.start - moment.start;
                if (Status status = fillItem(segment, timeline, track, item); !status)
                    return status;
                track.items.push_back(std::move(item));
            }
            if (i + 1 == count)
                addTransition(moment, segment.outGraph, segment.end, track);
            track.duration = segment.end - moment.start;
        }
        return {};
    }

    static const EffectGraph* transitionOf(const Moment& moment, const IdStamp& id) {
        const auto found = id.valid() ? moment.graphs.find(id) : moment.graphs.end();
        return found != moment.graphs.end() && found->second.isTransition() ? &found->second
                                                                            : nullptr;
    }

    // Black beneath a transition at head or tail, as long as the transition reaches.
    static bool isPadding(const Moment& moment, const Cel& cel, std::uint32_t index,
                          const CelSegment& segment) {
        if ((segment.flags & kEventPad) == 0 || segment.material.valid())
            return false;
        const Flicks length = segment.end - segment.start;
        const std::uint32_t count = cel.numSegments();
        if (index == 0 && segment.start == moment.start && count > 1) {
            const EffectGraph* graph = transitionOf(moment, cel.getSegment(1).inGraph);
            return graph && graph->inOffset == length;
        }
        const EffectGraph* graph = transitionOf(moment, segment.inGraph);
        return index > 0 && index + 1 == count && graph && graph->outOffset == length;
    }

    static void addTransition(const Moment& moment, const IdStamp& id, Flicks cut, Track& track) {
        const EffectGraph* graph = transitionOf(moment, id);
        if (!graph)
            return;
        const std::string& imported = graph->parameters;
        Item item;
        item.type = ItemType::transition;
        item.transitionType = importedText(imported, kImportedType);
        const std::string name = toUtf8(graph->name);
        if (item.transitionType.empty())
            item.transitionType = name == "Dissolve" ? "SMPTE_Dissolve" : name;
        else if (name != item.transitionType || !importedMember(imported, kImportedName).empty())
            item.name = name;
        item.enabled = importedMember(imported, kImportedEnabled) != "false";
        item.inOffset = graph->inOffset;
        item.outOffset = graph->outOffset;
        item.start = cut - moment.start - item.inOffset;
        item.duration = item.inOffset + item.outOffset;
        takeCommon(imported, item);
        track.items.push_back(std::move(item));
    }

    static void takeCommon(std::string_view imported, Item& item) {
        item.metadata = importedMember(imported, kImportedMetadata);
        item.effects = importedMember(imported, kImportedEffects);
        item.extra = importedMember(imported, kImportedExtra);
        item.range = importedMember(imported, kImportedRange);
        item.channel = importedText(imported, kImportedChannel);
        item.sourceRate = rateRead(importedText(imported, kImportedRate));
        item.sourceDrop = importedMember(imported, kImportedDrop) == "true";
        // An edit list that came by way of another format is known by what it said of the event.
        const std::string_view event = importedMember(item.metadata, "edl");
        if (!event.empty() && item.channel.empty()) {
            item.channel = importedText(event, "channel");
            item.sourceDrop = importedMember(event, "drop_frame") == "true";
        }
    }

    Status fillItem(const CelSegment& segment, Timeline& timeline, const Track& track, Item& item) {
        item.duration = segment.end - segment.start;
        item.name = toUtf8(segment.detail.name);
        takeCommon(segment.detail.metadata, item);
        item.enabled = (segment.flags & kEventDisabled) == 0;
        if (!track.enabled)
            item.enabled = importedMember(segment.detail.metadata, kImportedEnabled) != "false";
        subtitles_ += !segment.detail.lines.empty();
        if (!segment.material.valid()) {
            item.type = ItemType::gap;
            return {};
        }
        item.speed = (segment.flags & kEventFreeze) ? 0.0 : segment.speed;
        item.sourceStart = segment.stripStart;
        if (item.speed < 0)
            item.sourceStart += std::llround(static_cast<double>(item.duration) * item.speed);
        const Cookie played = convertCookie(segment.material, 'E');
        // What was recorded into the edit itself is its own material, not a nesting.
        const bool own = played == path_.back() && segment.material.type() != 'E';
        if (sources_.isEdit(played) && !own)
            return nest(played, timeline, item);
        unknown_ += !sources_.fill(played, segment, item);
        return {};
    }

    Status nest(const Cookie& played, Timeline& timeline, Item& item) {
        const EditPtr edit(played);
        if (!edit)
            return {StatusCode::notFound, item.name, "the edit that is nested cannot be opened"};
        auto nested = describe(edit);
        if (!nested)
            return nested.status();
        item.type = ItemType::nested;
        item.nested = static_cast<int>(timeline.nested.size());
        timeline.nested.push_back(std::move(*nested));
        return {};
    }

    ExportSources sources_;
    CookieVec path_;
    std::size_t items_ = 0;
    long subtitles_ = 0;
    long mixes_ = 0;
    long unknown_ = 0;
};

} // namespace

Result<Timeline> describeForExport(const EditPtr& edit) {
    if (!edit)
        return Status(StatusCode::notFound, {}, "there is no edit to export");
    Describer describer;
    auto timeline = describer.describe(edit);
    if (timeline)
        for (const std::string& warning : describer.warnings())
            addWarning(*timeline, warning);
    return timeline;
}

} // namespace cutroom
