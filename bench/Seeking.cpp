// The next and the previous point of 4 lists of N cuts, against `std::upper_bound` over each list's
// times.

#include "bench/limits/Cut.h"
#include "bench/support/Paired.h"
#include "platform/store/Cel.h"

#include <random>

namespace cutroom::bench {

namespace {

constexpr int kLists = 4;
constexpr int kTimes = 1000;

void seeking(benchmark::State& state) {
    const auto cuts = static_cast<std::size_t>(state.range(0));
    std::vector<std::vector<Flicks>> plain(kLists);
    std::vector<Kv::Ptr<Cel>> lists;
    for (int list = 0; list < kLists; ++list) {
        std::vector<CelSegment> segments(cuts);
        for (std::size_t i = 0; i < cuts; ++i) {
            segments[i].start = static_cast<Flicks>(i) * 1000 + (i > 0 ? list : 0);
            segments[i].end = static_cast<Flicks>(i + 1) * 1000 + list;
            plain[static_cast<std::size_t>(list)].push_back(segments[i].start);
        }
        lists.push_back(Kv::makePtr<Cel>());
        if (!lists.back()->setSegments(segments).ok())
            std::abort();
    }
    std::mt19937 random(1);
    std::vector<Flicks> times(kTimes);
    for (Flicks& time : times)
        time = static_cast<Flicks>(random() % (cuts * 1000));

    Paired paired(kTimes);
    paired.add("limit", [&] {
        std::ptrdiff_t sum = 0;
        for (const Flicks time : times)
            for (const auto& list : plain)
                sum += std::upper_bound(list.begin(), list.end(), time) - list.begin();
        benchmark::DoNotOptimize(sum);
    });
    paired.add("next", [&] {
        std::uint64_t sum = 0;
        for (const Flicks time : times)
            for (const auto& list : lists)
                sum += list->nextAfter(time);
        benchmark::DoNotOptimize(sum);
    });
    paired.add("previous", [&] {
        std::int64_t sum = 0;
        for (const Flicks time : times)
            for (const auto& list : lists)
                sum += list->lastBefore(time);
        benchmark::DoNotOptimize(sum);
    });
    paired.run(state);
}
BENCHMARK(seeking)->Arg(1000)->Arg(100'000)->Arg(1'000'000)->UseManualTime();

} // namespace

} // namespace cutroom::bench
