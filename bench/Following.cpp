// One time change handed on through N linked viewed edits of four clients each, against a virtual
// call for each client under one mutex per edit; and against as many plain moves of our own.

#include "bench/limits/Tell.h"
#include "bench/support/Paired.h"
#include "bench/support/ViewedEdit.h"
#include "sync/VobSynchroniser.h"

#include <memory>
#include <vector>

namespace cutroom::bench {

namespace {

constexpr std::size_t kClients = 4;

// `count` Vobs on edits of their own, with their clients.
class Viewers {
public:
    explicit Viewers(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            vobs.push_back(VobManager::instance().createVob(Cookie()));
            for (std::size_t k = 0; k < kClients; ++k)
                clients_.push_back(std::make_unique<SummingClient>(
                    vobs.back().get(), spreadPriority(k), kClientUnmanaged));
        }
    }

    LightweightVector<Kv::Ptr<Vob>> vobs;

private:
    std::vector<std::unique_ptr<SummingClient>> clients_;
};

// The least work: each edit is told of under a mutex of its own.
class PlainViewers {
public:
    explicit PlainViewers(std::size_t count) : tellers_(count) {
        for (PlainTeller& teller : tellers_)
            for (std::size_t k = 0; k < kClients; ++k)
                teller.add(sums_.emplace_back(makePlainSum()).get());
    }
    void move(double seconds) {
        for (PlainTeller& teller : tellers_)
            teller.tell(seconds);
    }

private:
    std::vector<std::unique_ptr<PlainListener>> sums_;
    std::vector<PlainTeller> tellers_;
};

int movesFor(std::size_t count) { return static_cast<int>(10000 / count); }

// Moves a different one each time.
void moveLinked(const Viewers& viewers, int moves) {
    for (int i = 0; i < moves; ++i)
        viewers.vobs[static_cast<std::size_t>(i) % viewers.vobs.size()]->setCurrentTime(i);
}

void follow(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const int moves = movesFor(count);
    const ViewedEdit project(0); // which is open meanwhile
    PlainViewers plain(count);
    const Viewers viewers(count);
    VobSynchroniser links;
    links.setItemsToSync(viewers.vobs);

    Paired paired(moves);
    paired.add("limit", [&] {
        for (int i = 0; i < moves; ++i)
            plain.move(i);
    });
    paired.add("linked", [&] { moveLinked(viewers, moves); });
    paired.run(state);
}
BENCHMARK(follow)->Arg(9)->Arg(64)->UseManualTime();

void followOrMove(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const int moves = movesFor(count);
    const ViewedEdit project(0);
    const Viewers unlinked(count), viewers(count);
    VobSynchroniser links;
    links.setItemsToSync(viewers.vobs);

    Paired paired(moves);
    paired.add("one by one", [&] {
        for (int i = 0; i < moves; ++i)
            for (const Kv::Ptr<Vob>& vob : unlinked.vobs)
                vob->setCurrentTime(i);
    });
    paired.add("linked", [&] { moveLinked(viewers, moves); });
    paired.run(state);
}
BENCHMARK(followOrMove)->Arg(9)->Arg(64)->UseManualTime();

} // namespace

} // namespace cutroom::bench
