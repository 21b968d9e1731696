#include "interchange/EdlTracks.h"

#include "platform/base/Strings.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

namespace cutroom {

namespace {

constexpr std::size_t kMaxTracks = 512;
constexpr std::size_t kMaxItems = 1'000'000;

// The first line of a transition pair, when it has no length: which clip goes out.
struct Outgoing {
    std::int64_t at = -1;
    const EdlEvent* event = nullptr;
};

struct Lane {
    Track track;
    std::int64_t end = 0; // frames
    const EdlEvent* last = nullptr;
    // How long the last clip would be if the transition into it were all of it; 0 otherwise.
    std::int64_t onlyTransition = 0;
};

using Lanes = std::vector<Lane>;

class Layer {
public:
    Layer(const EdlList& list, const EdlClock& clock, const EdlPlaces& places, Timeline& timeline)
        : list_(list), clock_(clock), places_(places), timeline_(timeline),
          digits_(audioDigits(list)) {}

    bool lay() {
        std::vector<std::size_t> order(list_.events.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::stable_sort(order.begin(), order.end(), [this](std::size_t a, std::size_t b) {
            return places_.events[a].in < places_.events[b].in;
        });
        for (const std::size_t index : order) {
            const EdlEvent& event = list_.events[index];
            const EdlPlace& place = places_.events[index];
            const Item item = edlItem(event, place, places_.first, clock_);
            for (const EdlChannel& channel : channelsOf(event, digits_))
                if (!layOn(channel, event, place, item))
                    return false;
        }
        finish();
        return true;
    }

private:
    bool layOn(const EdlChannel& channel, const EdlEvent& event, const EdlPlace& place,
               const Item& item) {
        Outgoing& outgoing = outgoing_[channel];
        if (place.length() <= 0) {
            if (outgoing.event)
                ++withoutLength_;
            outgoing = {place.in, &event};
            return true;
        }
        const EdlEvent* from = outgoing.at == place.in ? outgoing.event : nullptr;
        if (!event.isTransition() && from) {
            ++withoutLength_;
            from = nullptr;
        }
        outgoing = {};
        Lane* lane = laneFor(lanes_[channel], channel, event, place, from);
        if (!lane || ++itemCount_ > kMaxItems)
            return false;
        if (joins(*lane, event, place, item))
            extend(*lane, place, item);
        else
            add(*lane, event, place, from, item);
        return true;
    }

    // The track that ends where the event begins, of those the one that plays the reel that goes
    // out; else the lowest that is free.
    Lane* laneFor(Lanes& lanes, const EdlChannel& channel, const EdlEvent& event,
                  const EdlPlace& place, const EdlEvent* from) {
        Lane* touching = nullptr;
        Lane* free = nullptr;
        for (Lane& lane : lanes) {
            if (lane.end > place.in)
                continue;
            if (lane.end == place.in && event.isTransition()) {
                if (from && lane.last && lane.last->reel == from->reel)
                    return &lane;
                touching = touching ? touching : &lane;
            }
            free = free ? free : &lane;
        }
        if (touching || free)
            return touching ? touching : free;
        if (trackCount_ == kMaxTracks)
            return nullptr;
        ++trackCount_;
        lanes.emplace_back();
        Lane& lane = lanes.back();
        lane.end = places_.first;
        lane.track.kind = channel.kind;
        lane.track.name = channel.name;
        lane.track.kindText = channel.kind == TrackKind::video   ? "Video"
                              : channel.kind == TrackKind::audio ? "Audio"
                                                                 : channel.name;
        return &lane;
    }

    // After a transition that is all of its event, the next event often is the rest of the clip.
    static bool joins(const Lane& lane, const EdlEvent& event, const EdlPlace& place,
                      const Item& item) {
        if (lane.onlyTransition == 0 || event.kind != EdlKind::cut || lane.end != place.in ||
            lane.track.items.empty() || event.reel != lane.last->reel)
            return false;
        const Item& before = lane.track.items.back();
        const double reached = static_cast<double>(before.sourceStart) +
                               static_cast<double>(before.duration) * before.speed;
        const bool sameName = lane.last->toName.empty() || event.fromName.empty() ||
                              lane.last->toName == event.fromName;
        return before.type == item.type && sameName && before.speed == item.speed &&
               std::abs(reached - static_cast<double>(item.sourceStart)) < 1.0;
    }

    void extend(Lane& lane, const EdlPlace& place, const Item& rest) {
        lane.end = place.out;
        Item& item = lane.track.items.back();
        item.duration = clock_.rate.frameToFlicks(place.out - places_.first) - item.start;
        keepContinuation(item, rest);
        lane.onlyTransition = 0;
    }

    void add(Lane& lane, const EdlEvent& event, const EdlPlace& place, const EdlEvent* from,
             const Item& item) {
        const bool touches = lane.last && lane.end == place.in;
        if (event.isTransition()) {
            if (touches)
                nameOutgoing(lane, event);
            const bool other = from && (!touches || isOther(*from, event, lane));
            otherOutgoing_ += other && touches;
            addTransition(lane, event, place, from, other);
        }
        lane.track.items.push_back(item);
        lane.end = place.out;
        lane.last = &event;
        lane.onlyTransition =
            event.isTransition() && place.length() <= event.duration ? place.length() : 0;
    }

    // Tells whether the line of the outgoing side names another clip than the one before.
    static bool isOther(const EdlEvent& from, const EdlEvent& event, const Lane& lane) {
        const std::string& before = lane.track.items.back().name;
        return from.reel != lane.last->reel ||
               (!event.fromName.empty() && !before.empty() && event.fromName != before);
    }

    // The clip that goes out may have no name but the one that the transition gives it.
    static void nameOutgoing(Lane& lane, const EdlEvent& event) {
        const bool says = !event.fromName.empty() || event.fromGenerated;
        if (!says || !lane.last->fromName.empty() || lane.last->isTransition())
            return;
        Item& before = lane.track.items.back();
        if (before.type != ItemType::clip || before.name != before.media.reel)
            return;
        if (!event.fromName.empty())
            before.name = event.fromName;
        if (before.media.reel.empty())
            before.media.name = before.name;
        if (event.fromGenerated) {
            before.media.kind = ReferenceKind::generator;
            before.media.location = before.name;
        }
    }

    void addTransition(Lane& lane, const EdlEvent& event, const EdlPlace& place,
                       const EdlEvent* outgoing, bool other) {
        const std::int64_t length = std::min<std::int64_t>(event.duration, place.length());
        if (length < event.duration)
            ++shortened_;
        if (length == 0)
            return;
        Item item;
        item.type = ItemType::transition;
        item.name = event.effectName;
        item.transitionType =
            event.kind == EdlKind::dissolve ? std::string("SMPTE_Dissolve") : event.kindText;
        item.start = clock_.rate.frameToFlicks(place.in - places_.first);
        item.duration = clock_.rate.frameToFlicks(place.in - places_.first + length) - item.start;
        item.outOffset = item.duration;
        item.sourceRate.rate = clock_.rate;
        item.channel = event.channel;
        if (outgoing)
            item.metadata = outgoingMetadata(*outgoing, event, other);
        lane.track.items.push_back(std::move(item));
    }

    void finish() {
        for (auto& [channel, lanes] : lanes_)
            for (std::size_t i = 0; i < lanes.size(); ++i) {
                Track& track = lanes[i].track;
                if (i > 0)
                    track.name += " (" + toText(static_cast<unsigned long long>(i) + 1) + ")";
                track.duration = clock_.rate.frameToFlicks(lanes[i].end - places_.first);
                timeline_.tracks.push_back(std::move(track));
            }
        for (const auto& [channel, outgoing] : outgoing_)
            withoutLength_ += outgoing.event != nullptr;
        warn("events without length left out", withoutLength_);
        warn("transitions longer than the clip they lead to, shortened", shortened_);
        warn("transitions whose outgoing clip is not the one before", otherOutgoing_);
    }

    void warn(const char* what, long count) {
        if (count > 0)
            addWarning(timeline_, std::string(what) + ": " + toText(static_cast<long long>(count)));
    }

    const EdlList& list_;
    const EdlClock& clock_;
    const EdlPlaces& places_;
    Timeline& timeline_;
    const EdlDigits digits_;
    std::map<EdlChannel, Lanes> lanes_;
    std::map<EdlChannel, Outgoing> outgoing_;
    std::size_t trackCount_ = 0;
    std::size_t itemCount_ = 0;
    long withoutLength_ = 0;
    long shortened_ = 0;
    long otherOutgoing_ = 0;
};

} // namespace

bool layEvents(const EdlList& list, const EdlClock& clock, const EdlPlaces& places,
               Timeline& timeline) {
    return Layer(list, clock, places, timeline).lay();
}

} // namespace cutroom
