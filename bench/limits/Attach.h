// The least work of attaching a client and detaching it again: inserting into a vector that is
// sorted by priority, and two walks that tell everybody and in which nobody does anything.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

namespace cutroom::bench {

class PlainClient {
public:
    explicit PlainClient(int priority) : priority_(priority) {}
    virtual ~PlainClient() = default;
    virtual void clientsChanged() = 0;
    int priority() const noexcept { return priority_; }

private:
    int priority_;
};

// A client that does nothing when told; its class stays out of the compiler's sight.
std::unique_ptr<PlainClient> makeQuietClient(int priority);

class PlainClients {
public:
    void attach(PlainClient* client) {
        const auto before = [](const PlainClient* a, const PlainClient* b) {
            return a->priority() < b->priority();
        };
        clients_.insert(std::upper_bound(clients_.begin(), clients_.end(), client, before), client);
        tellAll();
    }

    void detach(PlainClient* client) {
        clients_.erase(std::find(clients_.begin(), clients_.end(), client));
        tellAll();
    }

private:
    void tellAll() {
        for (PlainClient* client : clients_)
            client->clientsChanged();
    }

    std::vector<PlainClient*> clients_;
};

} // namespace cutroom::bench
