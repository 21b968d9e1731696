// N assets added to a bin that holds half of them, and N looked up, against a vector with a hash
// set; a container with two indexes and a list without any beside ours.

#include "bench/limits/BinRecords.h"
#include "bench/support/Paired.h"
#include "bins/BinData.h"
#include "platform/embedded/EmbeddedHost.h"

#ifdef CUTROOM_RIVAL_BOOST
#include <boost/multi_index/hashed_index.hpp>
#include <boost/multi_index/member.hpp>
#include <boost/multi_index/random_access_index.hpp>
#include <boost/multi_index_container.hpp>
#endif

#include <algorithm>

namespace cutroom::bench {

namespace {

#ifdef CUTROOM_RIVAL_BOOST
namespace mi = boost::multi_index;
using TwoIndexes = boost::multi_index_container<
    PlainItem, mi::indexed_by<mi::random_access<>,
                              mi::hashed_unique<mi::member<PlainItem, Cookie, &PlainItem::asset>,
                                                std::hash<Cookie>>>>;
#endif

std::vector<Cookie> cookies(std::size_t count, char type) {
    std::vector<Cookie> all;
    for (const PlainItem& item : plainItems(count, type))
        all.push_back(item.asset);
    return all;
}

// The assets of no edit: nothing is opened for them.
void adding(benchmark::State& state) {
    const EmbeddedHost host;
    const auto all = cookies(static_cast<std::size_t>(state.range(0)), 'D');
    const std::vector<Cookie> half(all.begin(), all.begin() + state.range(0) / 2);
    Paired paired(static_cast<double>(all.size()));
    paired.add("limit", [&] {
        PlainBin bin;
        bin.add(half);
        bin.add(all);
        benchmark::DoNotOptimize(bin.items.size());
    });
    paired.add("bin", [&] {
        BinData bin;
        bin.add(half);
        bin.add(all);
        benchmark::DoNotOptimize(bin.numItems());
    });
#ifdef CUTROOM_RIVAL_BOOST
    paired.add("boost", [&] {
        TwoIndexes bin;
        for (const auto* part : {&half, &all})
            for (const Cookie& asset : *part) {
                PlainItem item;
                item.asset = asset;
                bin.push_back(item);
            }
        benchmark::DoNotOptimize(bin.size());
    });
#endif
    paired.run(state);
}
BENCHMARK(adding)->Arg(1000)->Arg(100'000)->UseManualTime();

void lookingUp(benchmark::State& state) {
    const EmbeddedHost host;
    auto all = cookies(static_cast<std::size_t>(state.range(0)), 'D');
    PlainBin plain;
    plain.add(all);
    BinData bin(all);
    std::reverse(all.begin(), all.end());
    Paired paired(static_cast<double>(all.size()));
    paired.add("limit", [&] {
        std::size_t found = 0;
        for (const Cookie& asset : all)
            found += plain.held.count(asset);
        benchmark::DoNotOptimize(found);
    });
    paired.add("contains", [&] {
        std::size_t found = 0;
        for (const Cookie& asset : all)
            found += bin.contains(asset);
        benchmark::DoNotOptimize(found);
    });
    paired.add("contains all", [&] { benchmark::DoNotOptimize(bin.contains(all)); });
#ifdef CUTROOM_RIVAL_BOOST
    TwoIndexes both;
    for (const PlainItem& item : plain.items)
        both.push_back(item);
    paired.add("boost", [&] {
        std::size_t found = 0;
        for (const Cookie& asset : all)
            found += both.get<1>().count(asset);
        benchmark::DoNotOptimize(found);
    });
#endif
    if (all.size() <= 1000)
        paired.add("linear", [&] {
            std::size_t found = 0;
            for (const Cookie& asset : all)
                found += std::any_of(plain.items.begin(), plain.items.end(),
                                     [&](const PlainItem& item) { return item.asset == asset; });
            benchmark::DoNotOptimize(found);
        });
    paired.run(state);
}
BENCHMARK(lookingUp)->Arg(1000)->Arg(100'000)->UseManualTime();

} // namespace

} // namespace cutroom::bench
