// A batch of N changes of a viewed edit with eight clients, told once at its end, against setting
// bits under a recursive mutex; without tracks, and with one track each.

#include "bench/limits/Batch.h"
#include "bench/support/Paired.h"
#include "bench/support/ViewedEdit.h"
#include "vob/VobModificationBatch.h"

namespace cutroom::bench {

namespace {

constexpr std::size_t kClients = 8;
// Kinds that no batch sorts out: each change sets one of them.
constexpr unsigned kKinds[] = {kVobTime, kVobMarks, kVobCuts, kVobSelection};

void withoutTracks(benchmark::State& state) {
    const auto changes = static_cast<std::size_t>(state.range(0));
    PlainBatch plain;
    ViewedEdit viewed(kClients);

    Paired paired(static_cast<double>(changes));
    paired.add("limit", [&] {
        for (std::size_t i = 0; i < changes; ++i)
            plain.add(kKinds[i % 4]);
        benchmark::DoNotOptimize(plain.close());
    });
    paired.add("Vob", [&] {
        const VobModificationBatch batch(viewed.vobPtr());
        for (std::size_t i = 0; i < changes; ++i)
            viewed.vob().addModification(VobModification(kKinds[i % 4]));
    });
    paired.run(state);
}
BENCHMARK(withoutTracks)->Arg(1000)->Arg(100000)->UseManualTime();

void withTracks(benchmark::State& state) {
    const auto changes = static_cast<std::size_t>(state.range(0));
    PlainBatch plain;
    ViewedEdit viewed(kClients);
    const IdStamp track = IdStamp::make();

    Paired paired(static_cast<double>(changes));
    paired.add("limit", [&] {
        for (std::size_t i = 0; i < changes; ++i)
            plain.add(kKinds[i % 4], i);
        benchmark::DoNotOptimize(plain.close());
    });
    paired.add("Vob", [&] {
        const VobModificationBatch batch(viewed.vobPtr());
        for (std::size_t i = 0; i < changes; ++i) {
            VobModification change(kKinds[i % 4]);
            change.addModifiedTrack(track);
            viewed.vob().addModification(change);
        }
    });
    paired.run(state);
}
BENCHMARK(withTracks)->Arg(1000)->Arg(100000)->UseManualTime();

} // namespace

} // namespace cutroom::bench
