// The least work of copying and searching a cut list: 120 bytes a clip that are copied as they
// are, and a sorted vector of times that is searched as the standard library searches.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace cutroom::bench {

inline constexpr std::size_t kPlainClipBytes = 120;

struct PlainClip {
    std::int64_t start = 0;
    std::int64_t end = 0;
    std::int64_t material = 0; // 0: black
    std::array<std::byte, kPlainClipBytes - 24> rest{};
};
static_assert(sizeof(PlainClip) == kPlainClipBytes);

using PlainTrack = std::vector<PlainClip>;

// Copies the bytes of `count` clips into memory of its own, as a copy of a list must.
inline std::unique_ptr<std::byte[]> plainCopy(const PlainClip* clips, std::size_t count) {
    std::unique_ptr<std::byte[]> copy(new std::byte[count * kPlainClipBytes]);
    std::memcpy(copy.get(), clips, count * kPlainClipBytes);
    return copy;
}

// The clips between two times.
inline std::unique_ptr<std::byte[]> plainCopyRange(const PlainTrack& track, std::int64_t from,
                                                   std::int64_t to) {
    const auto later = [](std::int64_t time, const PlainClip& clip) { return time < clip.start; };
    const auto first = std::upper_bound(track.begin(), track.end(), from, later) - 1;
    const auto last = std::upper_bound(first, track.end(), to, later);
    return plainCopy(&*first, static_cast<std::size_t>(last - first));
}

// The topmost clip at every moment, with one cursor a track.
inline PlainTrack plainFlatten(const std::vector<PlainTrack>& tracks, std::int64_t end) {
    PlainTrack flat;
    std::vector<std::size_t> cursors(tracks.size(), 0);
    for (std::int64_t at = 0; at < end;) {
        std::int64_t next = end;
        const PlainClip* shown = nullptr;
        for (std::size_t i = tracks.size(); i-- > 0 && !shown;) {
            const PlainTrack& track = tracks[i];
            std::size_t& cursor = cursors[i];
            while (cursor < track.size() &&
                   (track[cursor].end <= at || track[cursor].material == 0))
                ++cursor;
            if (cursor == track.size())
                continue;
            if (track[cursor].start <= at)
                shown = &track[cursor];
            next = std::min(next, shown ? shown->end : track[cursor].start);
        }
        flat.push_back(shown ? *shown : PlainClip());
        flat.back().start = at;
        flat.back().end = next;
        at = next;
    }
    return flat;
}

} // namespace cutroom::bench
