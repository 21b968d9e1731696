// Copies of an edit of 4 tracks with N clips in all, whole and in part, and its flattening, against
// copying 120 bytes a clip.

#include "bench/limits/Cut.h"
#include "bench/support/Paired.h"
#include "editops/RangeCopy.h"
#include "platform/store/CelStorage.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "platform/store/Editor.h"

namespace cutroom::bench {

namespace {

constexpr int kTracks = 4;

// The same clips for both: every tenth is black when `gaps`.
struct Tracks {
    Tracks(std::size_t clips, bool gaps) {
        edit = EditManager::instance().makeNewEdit(makeNewEditCookie(), kTracks, 0, 0,
                                                   Kv::FrameRate(25));
        for (int track = 0; track < kTracks; ++track) {
            PlainTrack& own = plain.emplace_back();
            std::vector<CelSegment> segments;
            for (std::size_t i = 0; i < clips / kTracks; ++i) {
                const auto at = static_cast<Flicks>(i) * 1000 + (i > 0 ? track : 0);
                const bool black = gaps && (i + static_cast<std::size_t>(track) * 3) % 10 < 4;
                if (!own.empty())
                    own.back().end = segments.back().end = at;
                own.push_back({at, at + 1000, black ? 0 : 1, {}});
                CelSegment segment;
                segment.start = at;
                segment.end = at + 1000;
                segment.material = black ? Cookie() : Cookie('V', i + 1);
                segments.push_back(segment);
            }
            if (!cel(track).setSegments(segments).ok())
                std::abort();
        }
    }
    ~Tracks() {
        const CookieVec own{edit.getCookie()};
        edit.release();
        if (!EditManager::instance().deleteEdits(own, "done").ok())
            std::abort();
    }
    Cel& cel(int track) const { return *edit->get_edit_cel_p(track); }

    EditModifier edit;
    std::vector<PlainTrack> plain;
};

void discard(EditModifier& copy) {
    const CookieVec own{copy.getCookie()};
    copy.release();
    if (!EditManager::instance().discard(own).ok())
        std::abort();
}

void limitWhole(const Tracks& tracks) {
    for (const PlainTrack& track : tracks.plain)
        benchmark::DoNotOptimize(plainCopy(track.data(), track.size()));
}

void wholeCopy(benchmark::State& state) {
    const Tracks tracks(static_cast<std::size_t>(state.range(0)), false);
    Paired paired(1);
    paired.add("limit", [&] { limitWhole(tracks); });
    // A new edit that takes everything, and its first change.
    paired.add("edit", [&] {
        EditModifier copy = makeNewLog(EditModule(tracks.edit), kLogTypeEdit, L"", Cookie());
        copy->get_edit_cel_p(0)->setStripCookie(1, Cookie('V', 99));
        discard(copy);
    });
    paired.add("full", [&] {
        for (int track = 0; track < kTracks; ++track) {
            const Kv::Ptr<Cel> copy = tracks.cel(track).copy();
            copy->setStripCookie(1, Cookie('V', 99));
        }
    });
    paired.run(state);
    std::size_t bytes = 0;
    for (int track = 0; track < kTracks; ++track)
        bytes += tracks.cel(track).storageBytes();
    state.counters["bytes a clip"] =
        static_cast<double>(bytes) / static_cast<double>(state.range(0));
}
BENCHMARK(wholeCopy)->Arg(1000)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->UseManualTime();

// The tracks of a short and of a long edit, shared in turn: the cost must not depend on their
// length. Done often in a row, since a single one after the copies above would only show a cold
// cache.
void sharing(benchmark::State& state) {
    constexpr int kTimes = 1000;
    const Tracks small(1000, false);
    const Tracks large(static_cast<std::size_t>(state.range(0)), false);
    const auto shareAll = [](const Tracks& tracks) {
        for (int i = 0; i < kTimes; ++i)
            for (int track = 0; track < kTracks; ++track)
                benchmark::DoNotOptimize(tracks.cel(track).copy());
    };
    Paired paired(kTimes);
    paired.add("1000 clips", [&] { shareAll(small); });
    paired.add("all clips", [&] { shareAll(large); });
    paired.run(state);
}
BENCHMARK(sharing)->Arg(1000)->Arg(100'000)->Arg(1'000'000)->UseManualTime();

void middleTenth(benchmark::State& state) {
    const Tracks tracks(static_cast<std::size_t>(state.range(0)), false);
    const Flicks end = tracks.plain[0].back().end;
    const Flicks from = end * 45 / 100 + 500;
    const Flicks to = end * 55 / 100 + 500;
    Paired paired(1);
    paired.add("limit", [&] {
        for (const PlainTrack& track : tracks.plain)
            benchmark::DoNotOptimize(plainCopyRange(track, from, to));
    });
    paired.add("list", [&] {
        for (int track = 0; track < kTracks; ++track) {
            const auto part = Kv::makePtr<Cel>();
            if (!part->overwriteFrom(tracks.cel(track), from, to, 0).ok())
                std::abort();
        }
    });
    // A new edit of it, with everything that a copy takes beside its lists.
    EditModule module(tracks.edit);
    module.markAllAt(TimeRange(toSeconds(from), toSeconds(to)), true);
    paired.add("edit", [&] {
        EditModifier copy = makeNewLog(module, kLogTypeEdit, L"", Cookie());
        discard(copy);
    });
    paired.run(state);
}
BENCHMARK(middleTenth)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->UseManualTime();

void flattening(benchmark::State& state) {
    const Tracks tracks(static_cast<std::size_t>(state.range(0)), true);
    std::vector<Kv::Ptr<Cel>> kept;
    for (int track = 0; track < kTracks; ++track)
        kept.push_back(tracks.cel(track).copy());
    Paired paired(1);
    paired.add("limit", [&] {
        benchmark::DoNotOptimize(plainFlatten(tracks.plain, tracks.plain[0].back().end));
    });
    paired.add("edit", [&] {
        if (!flattenEdit(tracks.edit, EditModule(EditPtr(tracks.edit)), 3, 0).ok())
            std::abort();
        for (int track = 0; track < kTracks; ++track) {
            if (track > 0)
                tracks.edit->addChan(kChanVideo);
            tracks.cel(track).assign(*kept[static_cast<std::size_t>(track)]);
        }
    });
    paired.run(state);
}
BENCHMARK(flattening)->Arg(1000)->Arg(100'000)->UseManualTime();

} // namespace

} // namespace cutroom::bench
