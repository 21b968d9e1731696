#include "bench/limits/Attach.h"

namespace cutroom::bench {

namespace {

struct QuietClient final : PlainClient {
    using PlainClient::PlainClient;
    void clientsChanged() override {}
};

} // namespace

std::unique_ptr<PlainClient> makeQuietClient(int priority) {
    return std::make_unique<QuietClient>(priority);
}

} // namespace cutroom::bench
