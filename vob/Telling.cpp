#include "vob/Telling.h"

#include "platform/base/Log.h"
#include "vob/VobClient.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace cutroom {

namespace {

constexpr std::size_t kMostTellings = 10'000;
constexpr std::size_t kMostTellingsPerClient = 8;

} // namespace

void logFailedClient(const char* where) noexcept {
    try {
        throw;
    } catch (const std::exception& error) {
        LogBoth("%s : a client failed: %s\n", where, error.what());
    } catch (...) {
        LogBoth("%s : a client failed\n", where);
    }
}

bool NestedTelling::cutOff(const char* where) noexcept {
    if (!std::exchange(runaway_, true))
        LogBoth("%s : too many clients told inside one another, stopped\n", where);
    return true;
}

Telling::Telling(Telling*& chain, std::size_t clientsAtStart) noexcept
    : chain_(chain), outer_(chain),
      allowance_(std::max(kMostTellings, kMostTellingsPerClient * clientsAtStart)) {
    chain_ = this;
}

// A telling that has seen a change of the list stops the loop: all those outside it have seen that
// change too.
void Telling::listWillChange(Telling* innermost, const std::vector<VobClient*>& clients) {
    for (Telling* telling = innermost; telling && !telling->listChanged();
         telling = telling->outer_) {
        auto told = std::make_unique<std::unordered_set<IdStamp>>();
        for (std::size_t i = 0; i < telling->told_; ++i)
            told->insert(clients[i]->uid());
        telling->allowance_ -= std::min(telling->told_, telling->allowance_ - 1);
        telling->toldIds_ = std::move(told);
    }
}

bool Telling::begin(const VobClient& client) { return toldIds_->insert(client.uid()).second; }

} // namespace cutroom
