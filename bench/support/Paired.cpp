#include "bench/support/Paired.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace cutroom::bench {

namespace {

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The processor's time when the environment asks for it: for a machine that others use.
double secondsNow() {
    static const bool ofProcessor = std::getenv("CUTROOM_BENCH_PROCESSOR_TIME") != nullptr;
    if (ofProcessor)
        return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double secondsOf(const std::function<void()>& work) {
    const double start = secondsNow();
    work();
    return secondsNow() - start;
}

} // namespace

void Paired::add(std::string name, std::function<void()> round) {
    contestants_.push_back({std::move(name), std::move(round), {}});
}

void Paired::run(benchmark::State& state) {
    runRound(0); // warms caches and allocators
    for (Contestant& each : contestants_)
        each.seconds.clear();
    std::size_t round = 0;
    for ([[maybe_unused]] auto _ : state)
        state.SetIterationTime(runRound(round++));
    report(state);
}

// Each round begins with another contestant, so that none always follows the same one.
double Paired::runRound(std::size_t first) {
    double total = 0;
    for (std::size_t i = 0; i < contestants_.size(); ++i) {
        Contestant& each = contestants_[(first + i) % contestants_.size()];
        each.seconds.push_back(secondsOf(each.round));
        total += each.seconds.back();
    }
    return total;
}

void Paired::report(benchmark::State& state) const {
    const std::vector<double>& limit = contestants_.front().seconds;
    for (const Contestant& each : contestants_) {
        std::vector<double> ratios;
        for (std::size_t i = 0; i < limit.size(); ++i)
            ratios.push_back(each.seconds[i] / limit[i]);
        state.counters[each.name + " ns"] = median(each.seconds) / items_ * 1e9;
        if (&each != &contestants_.front())
            state.counters[each.name + " x"] = median(std::move(ratios));
    }
}

} // namespace cutroom::bench
