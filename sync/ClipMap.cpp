#include "sync/ClipMap.h"

#include "platform/store/Cel.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace cutroom {

namespace {

// A stretch of a clip, and the material that it shows.
struct Piece {
    Cookie clip;
    Flicks start; // in the clip
    Flicks end;
    Flicks stripStart; // in the material
    double speed;      // not 0
    Kv::FrameRate rate;
    friend bool operator==(const Piece&, const Piece&) = default;
};
using PiecesOf = std::unordered_map<Cookie, std::vector<Piece>>; // by material

// The cookie that stands for all strips, picture and sound, of one log.
Cookie materialKey(const Cookie& material) { return convertCookie(material, 'E'); }

// Limits the result to the store's range, so that two can be added without overflow.
Flicks scaled(Flicks length, double factor) noexcept {
    if (factor == 1.0)
        return std::clamp(length, -kMaxFlicks, kMaxFlicks);
    const double result = static_cast<double>(length) * factor;
    return static_cast<Flicks>(std::llround(
        std::clamp(result, -static_cast<double>(kMaxFlicks), static_cast<double>(kMaxFlicks))));
}

// Calls `visit` with each segment that shows material, on the channels of these types, the topmost
// channel first.
template <class Visit>
void forEachSegment(const EditPtr& edit, unsigned types, const Visit& visit) {
    const Edit::Lock lock(*edit);
    std::vector<IdStamp> channels = edit->getChans(types, kSubAll & ~unsigned{kSubDerived});
    std::reverse(channels.begin(), channels.end());
    for (const IdStamp& channel : channels) {
        const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
        for (std::uint32_t i = 0; cel && i < cel->numSegments(); ++i)
            if (const CelSegment segment = cel->getSegment(i);
                segment.material.valid() && (segment.flags & kEventDisabled) == 0)
                visit(channel, segment);
    }
}

void addPieces(const EditPtr& clip, PiecesOf& pieces) {
    forEachSegment(clip, kChanAllTypes, [&](const IdStamp&, const CelSegment& segment) {
        if (segment.speed == 0)
            return;
        const Piece piece{clip.getCookie(),   segment.start, segment.end,
                          segment.stripStart, segment.speed, clip->getFrameRate()};
        std::vector<Piece>& known = pieces[materialKey(segment.material)];
        if (std::find(known.begin(), known.end(), piece) == known.end())
            known.push_back(piece);
    });
}

// The part of `segment` that shows `piece`; invalid when it shows none of it.
ClipReference overlap(const IdStamp& channel, const CelSegment& segment, const Piece& piece) {
    ClipReference whole{piece.clip, channel, segment.start, segment.end, 0, 0, piece.rate};
    whole.clipStart = piece.start + scaled(segment.stripStart - piece.stripStart, 1 / piece.speed);
    whole.speed = segment.speed / piece.speed;
    ClipReference part = whole;
    if (whole.speed == 0) {
        const bool shows = whole.clipStart >= piece.start && whole.clipStart < piece.end;
        return shows ? whole : ClipReference();
    }
    const auto reaches = [&](Flicks clipTime) {
        return segment.start + scaled(clipTime - whole.clipStart, 1 / whole.speed);
    };
    const auto [first, last] = std::minmax({reaches(piece.start), reaches(piece.end)});
    part.start = std::max(segment.start, first);
    part.end = std::min(segment.end, last);
    part.clipStart = whole.clipStart + scaled(part.start - whole.start, whole.speed);
    return part.start < part.end ? part : ClipReference();
}

// `time`, or when it is the border of two frames, `frames` later.
Flicks fromBorder(Flicks time, const Kv::FrameRate& rate, int frames) noexcept {
    return rate.isOnFrame(time) ? rate.frameToFlicks(rate.flicksToFrameNearest(time) + frames)
                                : time;
}

} // namespace

Flicks ClipReference::clipTimeAt(Flicks editTime) const noexcept {
    const Flicks time = clipStart + scaled(editTime - start, speed);
    return speed < 0 ? fromBorder(time, clipRate, -1) : time;
}

std::optional<Flicks> ClipReference::editTimeOf(Flicks clipTime, Flicks near) const noexcept {
    if (speed == 0)
        return clipTime == clipStart ? std::optional(std::clamp(near, start, end - 1))
                                     : std::nullopt;
    const Flicks passed = speed < 0 ? fromBorder(clipTime, clipRate, 1) : clipTime;
    const Flicks time = start + scaled(passed - clipStart, 1 / speed);
    return touches(time) ? std::optional(time) : std::nullopt;
}

void ClipMap::update(const EditPtr& sequence, const std::vector<EditPtr>& clips) {
    std::vector<Seen> now;
    const auto see = [&](const EditPtr& edit) {
        now.push_back(edit ? Seen{edit.get(), edit.getCookie(), edit->changeCount()} : Seen{});
    };
    see(sequence);
    std::for_each(clips.begin(), clips.end(), see);
    if (now == seen_)
        return;
    seen_ = std::move(now);
    references_.clear();
    if (!sequence)
        return;
    PiecesOf pieces;
    std::unordered_map<Cookie, Kv::FrameRate> rates; // of the clips, which a segment may name
    for (const EditPtr& clip : clips)
        if (clip) {
            rates.emplace(clip.getCookie(), clip->getFrameRate());
            addPieces(clip, pieces);
        }
    const auto refer = [&](const IdStamp& channel, const CelSegment& segment) {
        const Cookie material = materialKey(segment.material);
        if (const auto found = pieces.find(material); found != pieces.end()) {
            for (const Piece& piece : found->second)
                if (const ClipReference part = overlap(channel, segment, piece); part.valid())
                    references_.push_back(part);
        } else if (const auto clip = rates.find(material); clip != rates.end()) {
            references_.push_back({material, channel, segment.start, segment.end,
                                   segment.stripStart, segment.speed, clip->second});
        }
    };
    forEachSegment(sequence, kChanVideo, refer);
    forEachSegment(sequence, kChanAllTypes & ~unsigned{kChanVideo}, refer);
}

} // namespace cutroom
