// A recording client that does as a test says when it is told of other clients, and that manages
// others.
#pragma once

#include "tests/support/RecorderClient.h"

namespace cutroom::test {

class MeddlingClient final : public RecorderClient {
public:
    using RecorderClient::RecorderClient;

    std::function<void(VobClient*)> onAdded;
    std::function<void(VobClient*)> onRemoved;
    std::function<void()> onEnd; // of this client
    LightweightVector<VobClient*> managed;

    ~MeddlingClient() override {
        if (onEnd)
            onEnd();
    }
    void notifyClientAdded(VobClient* client) override {
        RecorderClient::notifyClientAdded(client);
        if (onAdded)
            onAdded(client);
    }
    void notifyClientRemoved(VobClient* client) override {
        RecorderClient::notifyClientRemoved(client);
        if (onRemoved)
            onRemoved(client);
    }
    LightweightVector<VobClient*> getManagedClients() override { return managed; }
};

} // namespace cutroom::test
