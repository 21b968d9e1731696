#include "vob/ClientWatch.h"

namespace cutroom {

namespace {

ClientWatch* innermost = nullptr; // user-interface thread

} // namespace

ClientWatch::ClientWatch(const VobClient* client) noexcept : client_(client), outer_(innermost) {
    innermost = this;
}

ClientWatch::~ClientWatch() { innermost = outer_; }

void ClientWatch::gone(const VobClient* client) noexcept {
    for (ClientWatch* watch = innermost; watch; watch = watch->outer_)
        if (watch->client_ == client)
            watch->client_ = nullptr;
}

} // namespace cutroom
