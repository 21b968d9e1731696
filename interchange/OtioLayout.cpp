#include "interchange/OtioLayout.h"

#include "interchange/ImportedJson.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace cutroom::otio {

namespace {

std::optional<Flicks> timeOf(std::string_view time) {
    const auto value = importedNumber(time, "value");
    const auto rate = Kv::FrameRate::fromDouble(importedNumber(time, "rate").value_or(0));
    if (!value || !rate)
        return {};
    const long double seconds = static_cast<long double>(*value) * rate->den() / rate->num();
    return static_cast<Flicks>(std::llround(seconds * kFlicksPerSecond));
}

// The range that the item's media states, for one that states none itself.
std::string_view availableRange(const Item& item) {
    const std::string active = importedText(item.media.raw, "active_media_reference_key");
    return importedMember(
        importedMember(importedMember(item.media.raw, "media_references"), active),
        "available_range");
}

class TrackLayout {
public:
    TrackLayout(const Timeline& timeline, const Track& track)
        : rate_(timeline.rate), track_(track) {
        laid_.track = &track;
        laid_.children.reserve(track.items.size() + 1);
    }

    LaidTrack lay(std::size_t& shortened) {
        for (std::size_t i = 0; i < track_.items.size(); ++i)
            add(track_.items[i], i + 1 == track_.items.size());
        for (std::size_t i = 0; i < laid_.children.size(); ++i)
            shortened += shorten(i);
        if (end_ + tail_ < track_.duration)
            fillTo(track_.duration);
        laid_.duration = end_ + tail_;
        return std::move(laid_);
    }

private:
    void add(const Item& item, bool isLast) {
        if (item.type != ItemType::transition) {
            fillTo(item.start);
            addItem(item);
            return;
        }
        Child child;
        child.item = &item;
        child.rate = item.sourceRate.valid() ? item.sourceRate : rate_;
        child.asWritten = offsetsHold(item);
        if (laid_.children.empty() && item.start <= 0)
            end_ = laid_.before = item.cut();
        else
            fillTo(item.cut());
        if (isLast)
            tail_ = std::max<Flicks>(0, track_.duration - end_);
        child.start = item.start;
        child.duration = item.duration;
        laid_.children.push_back(std::move(child));
    }

    // Shortens a transition so that it reaches no farther than the children beside it, unless it
    // and they are as they were read. True when that changed it.
    bool shorten(std::size_t index) {
        Child& child = laid_.children[index];
        if (!child.isTransition() ||
            (child.asWritten && isAsWritten(index - 1) && isAsWritten(index + 1)))
            return false;
        Flicks in = child.item->inOffset;
        Flicks out = child.item->outOffset;
        if (index > 0)
            in = std::min(in, laid_.children[index - 1].duration);
        out = std::min(out, index + 1 < laid_.children.size() ? laid_.children[index + 1].duration
                                                              : tail_);
        child.start = child.item->cut() - in;
        child.duration = in + out;
        child.sourceStart = in;
        const bool isShorter = in != child.item->inOffset || out != child.item->outOffset;
        child.asWritten &= !isShorter;
        return isShorter;
    }

    // Also of what lies past either end.
    bool isAsWritten(std::size_t index) const {
        return index >= laid_.children.size() || laid_.children[index].asWritten;
    }

    bool offsetsHold(const Item& item) const {
        const auto in = timeOf(importedMember(item.range, "in_offset"));
        const auto out = timeOf(importedMember(item.range, "out_offset"));
        const Flicks half = rate_.rate.frameToFlicks(1) / 2 + 1;
        return in && out && std::abs(*in - item.inOffset) <= half &&
               std::abs(*out - item.outOffset) <= half;
    }

    // Tells whether a time that was written off frames is meant for `place`.
    bool isMeantFor(Flicks time, Flicks place) const {
        return time == place ||
               (rate_.rate.flicksToFrameNearest(time) == rate_.rate.flicksToFrameNearest(place) &&
                rate_.rate.isOnFrame(place));
    }

    // Fills the hole before `time` with a gap, unless it is shorter than half a frame: then it
    // comes from times that were written off frames.
    void fillTo(Flicks time) {
        if (time <= end_ || isMeantFor(end_, time))
            return;
        Child gap;
        gap.start = end_;
        gap.duration = time - end_;
        gap.rate = rate_;
        end_ = time;
        laid_.children.push_back(std::move(gap));
    }

    void addItem(const Item& item) {
        Child child;
        child.item = &item;
        child.start = end_;
        child.sourceStart = item.sourceStart;
        child.rate = item.sourceRate.valid() ? item.sourceRate : rate_;
        const std::string_view written = item.range.empty() ? availableRange(item) : item.range;
        const auto start = timeOf(importedMember(written, "start_time"));
        const auto duration = timeOf(importedMember(written, "duration"));
        if (duration && std::abs(start.value_or(0) - item.sourceStart) <= 1 &&
            isMeantFor(end_ + *duration, item.end())) {
            child.asWritten = true;
            child.sourceStart = start.value_or(0);
            child.duration = *duration;
        } else {
            child.duration = std::max<Flicks>(0, item.end() - end_);
        }
        end_ += child.duration;
        laid_.children.push_back(std::move(child));
    }

    const RateRead& rate_;
    const Track& track_;
    LaidTrack laid_;
    Flicks end_ = 0;  // of what is laid
    Flicks tail_ = 0; // what a transition at the tail adds
};

// The indices in "stack/0/2" behind `root`; nothing when it begins otherwise.
std::optional<std::vector<std::size_t>> pathBelow(std::string_view path, std::string_view root) {
    if (root.empty() || !path.starts_with(root))
        return {};
    path.remove_prefix(root.size());
    std::vector<std::size_t> indices;
    if (path.empty())
        return indices;
    if (path.front() != '/')
        return {};
    for (const std::string& part : split(path.substr(1), '/'))
        indices.push_back(parseUnsigned(part).value_or(SIZE_MAX));
    return indices;
}

class MarkerLayout {
public:
    MarkerLayout(const Timeline& timeline, LaidStack& stack) : timeline_(timeline), stack_(stack) {}

    void lay() {
        stack_.times.resize(timeline_.markers.size());
        noteNested(timeline_, 0);
        for (std::size_t i = 0; i < timeline_.markers.size(); ++i)
            if (nested_.empty() || !isNested(timeline_.markers[i]))
                give(i);
        // Writing one marker anew may change how a reader understands the others, so they are asked
        // for twice before all are written anew.
        if (!agree() && !agree())
            for (MarkerTimes& times : stack_.times)
                times.asWritten = false;
        if (!agree())
            stack_.outside = counts_.outside;
    }

private:
    struct Placed {
        Span span;
        Kv::FrameRate rate;
    };
    struct Owner {
        Span span;
        Flicks source = 0;
        bool ofItem = false;
    };
    // What a path names, as far as it is there.
    struct Named {
        LaidTrack* track = nullptr;
        std::size_t child = SIZE_MAX; // SIZE_MAX: the track itself
    };

    static std::string keyOf(const Marker& marker) {
        return marker.owner + '\n' + marker.name + '\n' + marker.comment + '\n' +
               toText(static_cast<long long>(marker.colour.value_or(0)));
    }

    // Notes the markers of nested timelines at their places in the outer one.
    void noteNested(const Timeline& timeline, Flicks start) {
        for (const Track& track : timeline.tracks)
            for (const Item& item : track.items) {
                if (item.type != ItemType::nested)
                    continue;
                const Timeline& inside = timeline.nested[static_cast<std::size_t>(item.nested)];
                const Flicks at = start + item.start - item.sourceStart;
                for (const Marker& marker : inside.markers)
                    if (!inside.owner.empty() && marker.owner.starts_with(inside.owner))
                        nested_.emplace(keyOf(marker), Placed{{at + marker.start, marker.duration},
                                                              inside.rate.rate});
                noteNested(inside, at);
            }
    }

    // Tells whether a marker is one of something nested, which is written there. One that was
    // changed since on the outer timeline is not.
    bool isNested(const Marker& marker) const {
        const auto [first, last] = nested_.equal_range(keyOf(marker));
        return std::any_of(first, last, [&](const auto& entry) {
            const auto& [span, rate] = entry.second;
            // Both sides lie on frames of their own.
            Flicks off = timeline_.rate.rate.frameToFlicks(1) / 2 + 1;
            if (rate != timeline_.rate.rate)
                off += rate.frameToFlicks(1) / 2;
            return std::abs(span.start - marker.start) <= off &&
                   std::abs(span.duration - marker.duration) <= off;
        });
    }

    // The track and child that a marker's path names.
    Named ownerOf(const Marker& marker) const {
        Named named;
        const auto path = pathBelow(marker.owner, timeline_.owner);
        if (!path || path->size() > 2)
            return named;
        std::vector<std::size_t> rest = *path;
        const bool stackAtRoot = timeline_.owner == "stack" ||
                                 timeline_.source.starts_with("Stack") ||
                                 timeline_.source.starts_with("Timeline");
        if (stackAtRoot && rest.empty())
            return named;
        for (LaidTrack& each : stack_.tracks)
            if (!named.track &&
                (!stackAtRoot || each.track->place == static_cast<int>(rest.front())))
                named.track = &each;
        if (stackAtRoot)
            rest.erase(rest.begin());
        if (named.track && !rest.empty())
            named.child = rest.front();
        else if (named.track && named.track->track->alone)
            named.child = 0;
        return named;
    }

    // The child whose span holds the time: `wanted` if it does, else any; null for none.
    static Child* childAt(LaidTrack& track, std::size_t wanted, Flicks time) {
        const auto holds = [&](const Child& child) {
            return !child.isTransition() && child.item && time >= child.start &&
                   time <= child.start + child.duration;
        };
        if (wanted < track.children.size() && holds(track.children[wanted]))
            return &track.children[wanted];
        const auto after =
            std::upper_bound(track.children.begin(), track.children.end(), time,
                             [](Flicks at, const Child& child) { return at < child.start; });
        for (auto each = after; each != track.children.begin() && after - each < 3;)
            if (holds(*--each))
                return &*each;
        return nullptr;
    }

    void give(std::size_t index) {
        const Marker& marker = timeline_.markers[index];
        const auto [track, wanted] = ownerOf(marker);
        Child* const child =
            track && wanted != SIZE_MAX ? childAt(*track, wanted, marker.start) : nullptr;
        const bool onTrack = track && marker.start <= track->duration;
        Owner owner{{0, timeline_.duration}, 0, false};
        MarkerTimes& times = stack_.times[index];
        times.rate = timeline_.rate;
        if (child) {
            owner = {child->span(), child->sourceStart, true};
            child->markers.push_back(&marker);
            times.rate = child->rate;
        } else if (onTrack) {
            owner = {{0, track->duration}, -track->before, false};
            track->markers.push_back(&marker);
        } else {
            stack_.markers.push_back(&marker);
        }
        times.range = {owner.source + marker.start - owner.span.start, marker.duration};
        const auto start = timeOf(importedMember(marker.range, "start_time"));
        const auto duration = timeOf(importedMember(marker.range, "duration"));
        const Kv::FrameRate& rate = timeline_.rate.rate;
        times.asWritten = duration && rate.flicksToFrameNearest(marker.start + *duration) ==
                                          rate.flicksToFrameNearest(marker.start + marker.duration);
        indices_.push_back(index);
        owners_.push_back(owner);
        written_.push_back(start.value_or(0));
    }

    // Tells whether a reader would find all markers where they are. Those that it would not are
    // no longer written as they were read.
    bool agree() {
        std::vector<PendingMarker> pending(indices_.size());
        for (std::size_t i = 0; i < pending.size(); ++i) {
            const MarkerTimes& times = stack_.times[indices_[i]];
            pending[i].owner = owners_[i].span;
            pending[i].ownerSource = owners_[i].source;
            pending[i].ofItem = owners_[i].ofItem;
            pending[i].marker.written = times.asWritten ? written_[i] : times.range.start;
        }
        counts_ = decidePlaces(pending, timeline_);
        bool all = true;
        const Kv::FrameRate& rate = timeline_.rate.rate;
        for (std::size_t i = 0; i < pending.size(); ++i) {
            const Marker& marker = timeline_.markers[indices_[i]];
            if (rate.flicksToFrameNearest(pending[i].marker.start) ==
                rate.flicksToFrameNearest(marker.start))
                continue;
            all = false;
            stack_.times[indices_[i]].asWritten = false;
        }
        return all;
    }

    const Timeline& timeline_;
    LaidStack& stack_;
    std::vector<std::size_t> indices_; // of those that are written here
    std::vector<Owner> owners_;
    std::vector<Flicks> written_;
    std::unordered_multimap<std::string, Placed> nested_; // markers that nested timelines have
    PlaceCounts counts_;
};

} // namespace

LaidStack layOut(const Timeline& timeline) {
    LaidStack stack;
    stack.tracks.reserve(timeline.tracks.size());
    for (const Track& track : timeline.tracks)
        stack.tracks.push_back(TrackLayout(timeline, track).lay(stack.shortened));
    MarkerLayout(timeline, stack).lay();
    return stack;
}

} // namespace cutroom::otio
