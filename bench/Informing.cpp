// One change of a viewed edit told to N clients of five priorities, against a virtual call each
// under a recursive mutex.

#include "bench/limits/Tell.h"
#include "bench/support/Paired.h"
#include "bench/support/ViewedEdit.h"

#include <memory>
#include <vector>

namespace cutroom::bench {

namespace {

void inform(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const int changes = static_cast<int>(20000 / (count + 10));

    PlainTeller plain;
    std::vector<std::unique_ptr<PlainListener>> sums; // each on its own, as clients are
    for (std::size_t i = 0; i < count; ++i)
        plain.add(sums.emplace_back(makePlainSum()).get());
    ViewedEdit viewed(count);
    const VobModification change(kVobMarks);

    Paired paired(changes);
    paired.add("limit", [&] {
        for (int i = 0; i < changes; ++i)
            plain.tell(i);
    });
    paired.add("Vob", [&] {
        for (int i = 0; i < changes; ++i)
            viewed.vob().informClients(change);
    });
    paired.run(state);
}
BENCHMARK(inform)->Arg(8)->Arg(64)->Arg(1024)->UseManualTime();

} // namespace

} // namespace cutroom::bench
