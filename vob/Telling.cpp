#include "vob/Telling.h"

#include "vob/VobClient.h"

#include <algorithm>

namespace cutroom {

namespace {

constexpr std::size_t kMostTellings = 10'000;
constexpr std::size_t kMostTellingsPerClient = 8;

} // namespace

Telling::Telling(Telling*& chain, std::size_t clientsAtStart) noexcept
    : chain_(chain), outer_(chain),
      allowance_(std::max(kMostTellings, kMostTellingsPerClient * clientsAtStart)) {
    chain_ = this;
}

void Telling::listWillChange(Telling* innermost, const std::vector<VobClient*>& clients) {
    for (Telling* telling = innermost; telling; telling = telling->outer_) {
        if (telling->listChanged_)
            continue;
        for (std::size_t i = 0; i < telling->told_; ++i)
            telling->toldIds_.insert(clients[i]->uid());
        telling->allowance_ -= std::min(telling->told_, telling->allowance_ - 1);
        telling->listChanged_ = true;
    }
}

bool Telling::begin(const VobClient& client) { return toldIds_.insert(client.uid()).second; }

} // namespace cutroom
