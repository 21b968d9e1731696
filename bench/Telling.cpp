// One change told to N listeners of its type: a published value and a generic notifier against a
// virtual call for each listener under a recursive mutex.

#include "bench/limits/Tell.h"
#include "bench/support/Paired.h"
#include "vob/notify/ValServer.h"

#ifdef CUTROOM_RIVAL_SIGCPP
#include <sigc++/sigc++.h>
#endif

#include <memory>
#include <vector>

namespace cutroom::bench {

namespace {

constexpr int kType = 1000;

struct Sum final : iCallbackBase<int, NotifierEvent<double>> {
    int call(const NotifierEvent<double>& event) override {
        sum += event.getValue();
        return 0;
    }
    double sum = 0;
};

// How many changes one round makes, so that it takes some microseconds at least.
int changesPerRound(std::size_t listeners) { return static_cast<int>(20000 / (listeners + 10)); }

template <class Change> std::function<void()> repeated(int times, Change change) {
    return [times, change] {
        for (int i = 0; i < times; ++i)
            change(static_cast<double>(i));
    };
}

// Callbacks of ours, registered for `type` with `notifier` as long as this lives.
class Listeners {
public:
    template <class Notifier> Listeners(Notifier& notifier, std::size_t count, int type) {
        for (std::size_t i = 0; i < count; ++i)
            guards_.push_back(notifier.registerNotification(Kv::Ptr<Sum>(new Sum), type));
    }

private:
    std::vector<Kv::Ptr<Guard>> guards_;
};

void tell(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const int changes = changesPerRound(count);

    PlainTeller plain;
    std::vector<std::unique_ptr<PlainListener>>
        sums; // each on its own, as ours and the rivals' are
    for (std::size_t i = 0; i < count; ++i)
        plain.add(sums.emplace_back(makePlainSum()).get());

    ValServer<double> server;
    const Listeners followers(server, count, ValServerBase::valChangedMsgType);
    GenericNotifier<NotifierEvent<double>> notifier;
    const Listeners listeners(notifier, count, kType);

    Paired paired(changes);
    paired.add("limit", repeated(changes, [&](double value) { plain.tell(value); }));
    paired.add("ValServer", repeated(changes, [&](double value) { server = value; }));
    paired.add("GenericNotifier", repeated(changes, [&](double value) {
                   notifier.call(NotifierEvent<double>(kType, value, nullptr), kType);
               }));
#ifdef CUTROOM_RIVAL_SIGCPP
    sigc::signal<void(double)> signal;
    std::vector<double> signalled(count);
    for (double& sum : signalled)
        signal.connect([&sum](double value) { sum += value; });
    paired.add("sigc++", repeated(changes, [&](double value) { signal.emit(value); }));
#endif
    paired.run(state);
}
BENCHMARK(tell)->Arg(0)->Arg(1)->Arg(8)->Arg(64)->Arg(1024)->UseManualTime();

} // namespace

} // namespace cutroom::bench
