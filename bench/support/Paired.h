// Compares contestants inside one run: each round runs all of them in turn, so that whatever else
// the machine does affects all of them alike.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace cutroom::bench {

// Contestants over the same workload. The first one added is the limit that the others are
// measured against.
class Paired {
public:
    // `items`: how often one round does what is measured; times are reported per item.
    explicit Paired(double items) : items_(items) {}

    // Adds a contestant; `round` does the workload once and must leave its state as before.
    void add(std::string name, std::function<void()> round);

    // Runs rounds until `state` has enough. Reports the median nanoseconds per item of each
    // contestant as "NAME ns" and the median over rounds of its ratio to the limit as "NAME x".
    void run(benchmark::State& state);

private:
    struct Contestant {
        std::string name;
        std::function<void()> round;
        std::vector<double> seconds;
    };

    double runRound(std::size_t first);
    void report(benchmark::State& state) const;

    double items_;
    std::vector<Contestant> contestants_;
};

} // namespace cutroom::bench
