// The next and the previous point of 4 lists of N cuts, against `std::upper_bound` over each list's
// times; the next and the previous event of a viewed edit with 4 such channels selected, N / 10
// cues and two marks, at random times and stepping on, against that over five lists.

#include "bench/limits/Cut.h"
#include "bench/support/Paired.h"
#include "bench/support/ViewedEdit.h"
#include "platform/store/Cel.h"
#include "platform/store/Edit.h"

#include <array>
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

constexpr Flicks kFrame = kFlicksPerSecond / 25;

// A viewed edit with a cut every frame on 4 channels, not at one time, and a cue every ten frames;
// beside it the times of the five lists.
class SteppedEdit {
public:
    explicit SteppedEdit(std::size_t cuts) : viewed_(0), edit_(vob().getEdit()) {
        edit_->removeChans(kChanAllTypes, kSubAll);
        for (int channel = 0; channel < kLists; ++channel)
            addChannel(cuts, kFrame / kLists * channel, plain_[static_cast<std::size_t>(channel)]);
        CueList cues;
        for (std::size_t i = 0; i < cuts / 10; ++i) {
            const Flicks time = static_cast<Flicks>(i) * 10 * kFrame + kFrame / 3;
            cues.addCuePoint(Cue(toSeconds(time), L"cue"));
            plain_.back().push_back(time);
        }
        edit_->setCues(cues);
        EditModule module(edit_);
        module.setMark(edit_->getId(1), 3, Kv::MarkTypes::In);
        module.setMark(edit_->getId(2), 7, Kv::MarkTypes::Out);
        vob().setEditModule(module, false);
        vob().setConsoleTabStops(Vob::kStopDefault);
    }

    Vob& vob() { return viewed_.vob(); }
    // What is the least: one search a list.
    std::ptrdiff_t search(Flicks time) const {
        std::ptrdiff_t sum = 0;
        for (const auto& list : plain_)
            sum += std::upper_bound(list.begin(), list.end(), time) - list.begin();
        return sum;
    }

private:
    void addChannel(std::size_t cuts, Flicks offset, std::vector<Flicks>& plain) {
        std::vector<CelSegment> segments(cuts);
        for (std::size_t i = 0; i < cuts; ++i) {
            segments[i].start = static_cast<Flicks>(i) * kFrame + (i > 0 ? offset : 0);
            segments[i].end = static_cast<Flicks>(i + 1) * kFrame + offset;
            plain.push_back(segments[i].start);
        }
        if (!edit_->get_edit_cel_p(edit_->addChan(kChanVideo))->setSegments(segments).ok())
            std::abort();
    }

    ViewedEdit viewed_;
    EditPtr edit_;
    std::array<std::vector<Flicks>, kLists + 1> plain_; // the cues last
};

void runStepping(benchmark::State& state, const std::vector<Flicks>& times) {
    SteppedEdit edit(static_cast<std::size_t>(state.range(0)));
    Vob& vob = edit.vob();
    Paired paired(static_cast<double>(times.size()));
    paired.add("limit", [&] {
        std::ptrdiff_t sum = 0;
        for (const Flicks time : times)
            sum += edit.search(time);
        benchmark::DoNotOptimize(sum);
    });
    paired.add("next", [&] {
        double sum = 0;
        for (const Flicks time : times)
            sum += vob.getNextEvent(toSeconds(time), false, false).time;
        benchmark::DoNotOptimize(sum);
    });
    paired.add("previous", [&] {
        double sum = 0;
        for (const Flicks time : times)
            sum += vob.getPrevEvent(toSeconds(time), false, false).time;
        benchmark::DoNotOptimize(sum);
    });
    paired.run(state);
}

void randomEvents(benchmark::State& state) {
    std::mt19937_64 random(1);
    std::vector<Flicks> times(kTimes);
    for (Flicks& time : times)
        time = static_cast<Flicks>(random() % static_cast<std::uint64_t>(state.range(0) * kFrame));
    runStepping(state, times);
}
BENCHMARK(randomEvents)->Arg(1000)->Arg(100'000)->Arg(1'000'000)->UseManualTime();

// From one event to the next, in the middle of the edit.
void stepping(benchmark::State& state) {
    std::vector<Flicks> times(kTimes);
    for (std::size_t i = 0; i < times.size(); ++i)
        times[i] = state.range(0) / 4 * kFrame + static_cast<Flicks>(i) * kFrame / kLists;
    runStepping(state, times);
}
BENCHMARK(stepping)->Arg(1000)->Arg(100'000)->Arg(1'000'000)->UseManualTime();

} // namespace

} // namespace cutroom::bench
