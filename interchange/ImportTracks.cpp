#include "interchange/ImportTracks.h"

#include "interchange/ImportedJson.h"
#include "platform/base/Characters.h"
#include "platform/store/Edit.h"
#include "platform/store/Effects.h"

#include <algorithm>
#include <utility>

namespace cutroom {

namespace {

EditChanType typeOf(TrackKind kind) {
    switch (kind) {
    case TrackKind::video:
        return kChanVideo;
    case TrackKind::audio:
        return kChanAudio;
    case TrackKind::subtitle:
        return kChanSubtitle;
    case TrackKind::other:
        break;
    }
    return kChanOther;
}

bool contains(const std::string& text, std::string_view word) {
    return toLowerUtf8(text).find(word) != std::string::npos;
}

bool isWipeCode(const std::string& type) {
    return type.starts_with('W') && isDigits(std::string_view(type).substr(1));
}

Cookie templateOf(const Item& transition) {
    const std::string& type = transition.transitionType;
    const wchar_t* name = nullptr;
    if (contains(type, "dissolve"))
        name = L"Dissolve";
    else if (isWipeCode(type) || contains(type, "wipe"))
        name = L"Wipe";
    const auto found =
        name ? EffectTemplateManager::instance().getTemplate(std::wstring(name)) : std::nullopt;
    return found ? found->id : Cookie();
}

void addCommon(ImportedJson& json, const Item& item, const Kv::FrameRate& rate) {
    json.addRaw(kImportedMetadata, item.metadata);
    json.addRaw(kImportedEffects, item.effects);
    json.addRaw(kImportedExtra, item.extra);
    const RateRead& own = item.sourceRate;
    const bool unwritten = own.literal.empty() && own.valid() && own.rate != rate;
    json.add(kImportedRate, unwritten ? own.rate.asString() : own.literal);
    if (item.sourceDrop)
        json.addBool(kImportedDrop, true);
    json.addRaw(kImportedRange, item.range);
    json.add(kImportedChannel, item.channel);
}

// Puts the items of one track in order as segments.
class Layer {
public:
    Layer(Edit& edit, const Track& track, const ImportScene& scene)
        : edit_(edit), track_(track), scene_(scene) {
        segments_.reserve(track.items.size() + 2);
    }

    std::vector<CelSegment> lay() {
        for (const Item& item : track_.items)
            add(item);
        finish();
        return std::move(segments_);
    }

private:
    void add(const Item& item) {
        if (item.type == ItemType::transition) {
            dropPending();
            pending_ = &item;
            return;
        }
        if (item.duration <= 0) {
            ++scene_.losses.withoutLength;
            return;
        }
        fillTo(item.start);
        push(segmentOf(item));
    }

    CelSegment segmentOf(const Item& item) const {
        CelSegment segment;
        segment.start = item.start;
        segment.end = item.end();
        segment.detail.name = toWide(item.name);
        ImportedJson json;
        addCommon(json, item, edit_.getFrameRate());
        if (item.type != ItemType::gap) {
            segment.material = materialOf(item);
            segment.stripStart = importedStripStart(item);
            segment.speed = item.speed;
            if (item.speed == 0)
                segment.flags |= kEventFreeze;
            segment.detail.media = toWide(item.media.location);
            json.addRaw(kImportedMedia, item.media.raw);
        }
        if (!item.enabled || !track_.enabled)
            segment.flags |= kEventDisabled;
        if (!item.enabled && !track_.enabled)
            json.addBool(kImportedEnabled, false);
        segment.detail.metadata = json.take();
        return segment;
    }

    Cookie materialOf(const Item& item) const {
        if (item.type == ItemType::clip)
            return scene_.sources.materialOf(item, track_.kind, importedChannel(item, track_));
        const auto index = static_cast<std::size_t>(item.nested);
        return item.nested >= 0 && index < scene_.nested.size() ? scene_.nested[index] : Cookie();
    }

    Flicks end() const { return segments_.empty() ? 0 : segments_.back().end; }

    // Black up to `time`; under a transition at the head it is padding.
    void fillTo(Flicks time) {
        if (time <= end())
            return;
        if (pending_ && segments_.empty() && pending_->cut() == time && pending_->start < time) {
            const Flicks padStart = std::max<Flicks>(0, pending_->start);
            if (padStart > 0)
                push(black(0, padStart, 0));
            push(black(padStart, time, kEventPad));
        } else {
            push(black(end(), time, 0));
        }
    }

    static CelSegment black(Flicks from, Flicks to, std::uint8_t flags) {
        CelSegment segment;
        segment.start = from;
        segment.end = to;
        segment.flags = flags;
        return segment;
    }

    void push(CelSegment segment) {
        if (pending_ && pending_->cut() == segment.start) {
            segment.inGraph = graphOf(*pending_);
            pending_ = nullptr;
        }
        segments_.push_back(std::move(segment));
    }

    void finish() {
        const Flicks duration = track_.duration;
        if (pending_ && pending_->cut() > end())
            fillTo(pending_->cut());
        if (pending_ && pending_->cut() == end() && !segments_.empty()) {
            if (duration > end())
                push(black(end(), std::min(duration, pending_->end()), kEventPad));
            else
                segments_.back().outGraph = graphOf(*std::exchange(pending_, nullptr));
        }
        dropPending();
        fillTo(duration);
    }

    void dropPending() {
        if (pending_)
            ++scene_.losses.transitions;
        pending_ = nullptr;
    }

    IdStamp graphOf(const Item& transition) const {
        EffectGraph graph;
        graph.kind = "transition";
        graph.name = toWide(transition.name.empty() ? transition.transitionType : transition.name);
        graph.effectTemplate = templateOf(transition);
        graph.inOffset = transition.inOffset;
        graph.outOffset = transition.outOffset;
        ImportedJson json;
        json.add(kImportedType, transition.transitionType);
        if (transition.name == transition.transitionType)
            json.add(kImportedName, transition.name);
        if (!transition.enabled)
            json.addBool(kImportedEnabled, false);
        addCommon(json, transition, edit_.getFrameRate());
        graph.parameters = json.take();
        return edit_.setEffectGraph(std::move(graph));
    }

    Edit& edit_;
    const Track& track_;
    const ImportScene& scene_;
    const Item* pending_ = nullptr; // a transition whose incoming segment is not laid yet
    std::vector<CelSegment> segments_;
};

void describeChannel(Edit& edit, const IdStamp& channel, const Track& track) {
    edit.setChanUserName(channel, toWide(track.name));
    ImportedJson json;
    json.add(kImportedKind, track.kindText);
    if (track.place >= 0)
        json.add(kImportedPlace, track.place);
    if (track.alone)
        json.addBool(kImportedAlone, true);
    if (!track.enabled)
        json.addBool(kImportedEnabled, false);
    json.addRaw(kImportedMetadata, track.metadata);
    json.addRaw(kImportedEffects, track.effects);
    json.addRaw(kImportedExtra, track.extra);
    edit.setChanMetadata(channel, json.take());
}

bool hasMaterial(const std::vector<CelSegment>& segments) {
    return std::any_of(segments.begin(), segments.end(),
                       [](const CelSegment& segment) { return segment.material.valid(); });
}

} // namespace

Status layTracks(const EditPtr& edit, Timeline& timeline, const ImportScene& scene,
                 const std::function<void(const Track&)>& laid) {
    for (Track& track : timeline.tracks) {
        const IdStamp channel = edit->addChan(typeOf(track.kind));
        describeChannel(*edit, channel, track);
        scene.losses.disabledTracks += !track.enabled;
        const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
        const std::vector<CelSegment> segments = Layer(*edit, track, scene).lay();
        if (Status status = cel->setSegments(segments); !status)
            return status;
        if (hasMaterial(segments))
            cel->setFlags(kCelHasMaterial);
        laid(track);
        track.items = std::vector<Item>();
    }
    return {};
}

} // namespace cutroom
