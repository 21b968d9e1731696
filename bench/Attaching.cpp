// One client attached to a viewed edit and detached again among N others, against inserting into a
// sorted vector with two walks in which nobody does anything.

#include "bench/limits/Attach.h"
#include "bench/support/Paired.h"
#include "bench/support/ViewedEdit.h"

#include <memory>
#include <vector>

namespace cutroom::bench {

namespace {

void attachAndDetach(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const int times = static_cast<int>(20000 / (count + 10));

    PlainClients plain;
    std::vector<std::unique_ptr<PlainClient>> others;
    for (std::size_t i = 0; i < count; ++i)
        plain.attach(others.emplace_back(makeQuietClient(spreadPriority(i))).get());
    const auto plainClient = makeQuietClient(kClientPrioritySynchroniser);

    ViewedEdit viewed(count);
    SummingClient client(nullptr, kClientPrioritySynchroniser, kClientUnmanaged);

    Paired paired(times);
    paired.add("limit", [&] {
        for (int i = 0; i < times; ++i) {
            plain.attach(plainClient.get());
            plain.detach(plainClient.get());
        }
    });
    paired.add("Vob", [&] {
        for (int i = 0; i < times; ++i) {
            VobManager::instance().open(&client, viewed.vobPtr());
            VobManager::instance().close(&client, false);
        }
    });
    paired.run(state);
}
BENCHMARK(attachAndDetach)->Arg(64)->Arg(1024)->UseManualTime();

} // namespace

} // namespace cutroom::bench
