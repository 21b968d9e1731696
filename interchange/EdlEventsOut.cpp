#include "interchange/EdlEventsOut.h"

#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <limits>
#include <map>
#include <tuple>
#include <utility>

namespace cutroom {

namespace {

bool plays(const Item& item) {
    return (item.type == ItemType::clip || item.type == ItemType::nested) && item.enabled;
}

bool hasOtherEffects(const Item& item) {
    bool any = false;
    forEachImportedEntry(item.effects, [&](std::string_view effect) {
        const std::string schema = importedText(effect, "OTIO_SCHEMA");
        any = any || !(schema.starts_with("LinearTimeWarp") || schema.starts_with("FreezeFrame"));
    });
    return any;
}

// The number in the name ("V2", "A12") of a track that was read from a list; 0 for other tracks.
int listedNumber(const Track& track) {
    const bool listed = std::any_of(track.items.begin(), track.items.end(),
                                    [](const Item& item) { return !item.channel.empty(); });
    return listed && track.name.size() > 1 ? std::max(1, leadingInt(track.name.substr(1))) : 0;
}

// The place of a track among those of its kind, from 1.
int placeInKind(const Timeline& timeline, int track) {
    const auto end = timeline.tracks.begin() + track + 1;
    const TrackKind kind = timeline.tracks[static_cast<std::size_t>(track)].kind;
    return static_cast<int>(std::count_if(timeline.tracks.begin(), end,
                                          [=](const Track& one) { return one.kind == kind; }));
}

// The channel of an edit list that a track is.
EdlChannel channelOf(const Timeline& timeline, int track) {
    const Track& own = timeline.tracks[static_cast<std::size_t>(track)];
    const int listed = listedNumber(own);
    if (own.kind == TrackKind::video) {
        const int number = std::max(1, listed);
        return {own.kind, number, number == 1 ? "V" : "V" + toText(static_cast<long long>(number))};
    }
    if (own.kind == TrackKind::audio) {
        const int number = listed != 0 ? listed : placeInKind(timeline, track);
        return {own.kind, number, "A" + toText(static_cast<long long>(number))};
    }
    // The name may be another one, as that of a second track of the channel is.
    const auto listedItem = std::find_if(own.items.begin(), own.items.end(),
                                         [](const Item& item) { return !item.channel.empty(); });
    return {own.kind, 1, listedItem == own.items.end() ? own.name : listedItem->channel};
}

class TrackEvents {
public:
    TrackEvents(const Timeline& timeline, int track, EdlLosses& losses)
        : rate_(timeline.rate.rate), track_(timeline.tracks[static_cast<std::size_t>(track)]),
          channel_(channelOf(timeline, track)), losses_(losses) {}

    std::vector<EdlEventOut> take() {
        const auto& items = track_.items;
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (items[i].type == ItemType::transition) {
                lead_ = &items[i];
                continue;
            }
            const bool goesOut = i + 1 < items.size() &&
                                 items[i + 1].type == ItemType::transition &&
                                 items[i + 1].cut() == items[i].end();
            const std::int64_t all = frame(items[i].end()) - frame(items[i].start);
            add(items[i], goesOut ? std::min(frame(items[i + 1].inOffset), all) : 0);
        }
        if (leads())
            addEvent(nullptr, frame(lead_->cut()), frame(lead_->end()));
        shorten();
        return std::move(events_);
    }

private:
    std::int64_t frame(Flicks time) const { return rate_.flicksToFrameNearest(time); }
    // Tells whether a transition with a length waits for what it leads to. It is written even when
    // that is black: the clip before has given its last frames to the fade.
    bool leads() const { return lead_ && lead_->end() > lead_->start; }

    // `nextIn`: the frames at the item's end that belong to the transition out of it.
    void add(const Item& item, std::int64_t nextIn) {
        if (last_ && item.start > last_->end())
            last_ = nullptr;
        const bool written = plays(item);
        losses_.disabled += !written && item.type != ItemType::gap;
        if (written || leads() || (item.type == ItemType::gap && !edlFacts(item).empty())) {
            addEvent(written ? &item : nullptr, frame(item.start), frame(item.end()) - nextIn,
                     written || item.type == ItemType::gap ? edlFacts(item) : std::string_view());
            losses_.nested += item.type == ItemType::nested;
            losses_.effects += hasOtherEffects(item);
        }
        lead_ = nullptr;
        last_ = &item;
    }

    // An event whose item begins at `at`, or sooner with the transition that leads to it.
    void addEvent(const Item* item, std::int64_t at, std::int64_t end,
                  std::string_view facts = {}) {
        EdlEventOut event;
        event.item = item;
        event.facts = facts;
        event.recordIn = at;
        event.recordOut = end;
        event.channels = {channel_};
        if (lead_) {
            event.recordIn = std::max(at - frame(lead_->inOffset), std::min(at, earliestLead()));
            losses_.shortened += event.recordIn > at - frame(lead_->inOffset);
            event.transition = lead_;
            event.transitionFrames = frame(lead_->end()) - event.recordIn;
            event.outgoing = last_ && plays(*last_) ? last_ : nullptr;
            const std::string& type = lead_->transitionType;
            const bool known = toLowerUtf8(type).find("dissolve") != type.npos ||
                               (type.size() == 4 && type[0] == 'W' &&
                                type.find_first_not_of("0123456789", 1) == type.npos);
            losses_.transitions += !known;
        }
        if (event.recordOut > event.recordIn)
            events_.push_back(std::move(event));
    }

    // Where a transition can begin at the soonest: it cannot go out of more than one event.
    std::int64_t earliestLead() const {
        if (last_)
            return frame(last_->start);
        return events_.empty() ? std::numeric_limits<std::int64_t>::min()
                               : events_.back().recordOut;
    }

    void shorten() {
        for (EdlEventOut& event : events_)
            if (event.transitionFrames > event.length()) {
                event.transitionFrames = event.length();
                ++losses_.shortened;
            }
    }

    const Kv::FrameRate rate_;
    const Track& track_;
    const EdlChannel channel_;
    EdlLosses& losses_;
    const Item* lead_ = nullptr; // a transition whose incoming item is to come
    const Item* last_ = nullptr; // what touches the next item
    std::vector<EdlEventOut> events_;
};

// All that has to agree before the events of two tracks become one.
auto identityOf(const EdlEventOut& event) {
    static const Item kBlack;
    const Item& item = event.item ? *event.item : kBlack;
    const std::string type = event.transition ? event.transition->transitionType : std::string();
    return std::make_tuple(
        event.recordIn, event.recordOut, event.transitionFrames, type, event.item != nullptr,
        std::string_view(item.name), std::string_view(item.channel),
        std::string_view(item.media.reel), std::string_view(item.media.name),
        std::string_view(item.media.location), item.sourceStart, item.speed,
        std::string_view(item.metadata), event.facts,
        event.outgoing ? std::string_view(event.outgoing->name) : std::string_view());
}

} // namespace

std::vector<std::string> EdlLosses::text() const {
    const std::pair<long, const char*> kinds[] = {
        {tracks, "tracks that an edit list cannot hold left out"},
        {disabled, "disabled clips left out"},
        {nested, "nested edits, written as clips"},
        {effects, "clips with effects that an edit list cannot say"},
        {transitions, "transitions of kinds that an edit list lacks, written as dissolves"},
        {shortened, "transitions longer than a clip that they join, shortened"},
        {wrapped, "sources that start before 00:00:00:00 or after a day, whose timecode wraps"},
        {rates, "sources at another frame rate than the edit, which an edit list cannot say"},
        {reels, "reels cut to eight characters of A-Z, 0-9 and _, told in full below the event"},
        {early, "markers before 00:00:00:00 left out"},
        {lasting, "markers that last, written as points"},
        {colours, "marker colours, written as the nearest known"},
        {fields, "values of fields of markers left out"},
    };
    std::vector<std::string> all;
    for (const auto& [times, what] : kinds)
        if (times > 0)
            all.push_back(std::string(what) + ": " + toText(static_cast<long long>(times)));
    return all;
}

std::string_view edlFacts(const Item& item) { return importedMember(item.metadata, "edl"); }

std::string_view edlRest(std::string_view facts) { return importedMember(facts, "continued"); }

bool edlIsOther(std::string_view outgoing) { return importedMember(outgoing, "other") == "true"; }

std::vector<EdlEventOut> edlEventsOf(const Timeline& timeline, const std::vector<int>& tracks,
                                     EdlLosses& losses) {
    std::vector<EdlEventOut> all;
    std::map<decltype(identityOf(EdlEventOut())), std::size_t> known;
    for (const int track : tracks)
        for (EdlEventOut& event : TrackEvents(timeline, track, losses).take()) {
            const auto [entry, isNew] = known.try_emplace(identityOf(event), all.size());
            if (isNew || all[entry->second].channels.contains(*event.channels.begin()) ||
                event.channels.begin()->kind == TrackKind::other)
                all.push_back(std::move(event));
            else
                all[entry->second].channels.insert(*event.channels.begin());
        }
    std::stable_sort(all.begin(), all.end(), [](const EdlEventOut& a, const EdlEventOut& b) {
        return a.recordIn < b.recordIn;
    });
    return all;
}

} // namespace cutroom
