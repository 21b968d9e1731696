#include "bench/limits/Tell.h"

namespace cutroom::bench {

namespace {

struct PlainSum final : PlainListener {
    void changed(double value) override { sum += value; }
    double sum = 0;
};

} // namespace

std::unique_ptr<PlainListener> makePlainSum() { return std::make_unique<PlainSum>(); }

} // namespace cutroom::bench
