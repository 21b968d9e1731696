// The list of a Vob's clients.
#include "platform/base/Log.h"
#include "vob/ClientWatch.h"
#include "vob/Telling.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"
#include "vob/VobModificationBatch.h"
#include "vob/iImageViewClient.h"

#include <algorithm>

namespace {

// The number of additions being told at the moment, each inside the telling of another, of any Vob.
int additions = 0;

class AddingClient {
public:
    AddingClient() noexcept { ++additions; }
    ~AddingClient() { --additions; }
    AddingClient(const AddingClient&) = delete;
    AddingClient& operator=(const AddingClient&) = delete;
};

bool higherPriority(const VobClient* a, const VobClient* b) {
    return a->getPriority() > b->getPriority();
}

} // namespace

bool Vob::isAddingClient() noexcept { return additions > 0; }

// --- changing the list ---------------------------------------------------------------------------

void Vob::listWillChange() { cutroom::Telling::listWillChange(tellings_, clients_); }

void Vob::addClient(VobClient* client) {
    const Kv::Ptr<Vob> self = keepAlive();
    const CriticalSection::Lock lock(clientLock_);
    if (client) {
        listWillChange();
        clients_.push_back(client);
        client->setVob(this);
        const AddingClient adding;
        walkClients(client, &VobClient::notifyClientAdded);
    }
    sortClients();
}

void Vob::removeClient(VobClient* client) {
    const Kv::Ptr<Vob> self = keepAlive();
    const CriticalSection::Lock lock(clientLock_);
    const auto found = std::find(clients_.begin(), clients_.end(), client);
    if (found == clients_.end())
        return;
    listWillChange();
    clients_.erase(found);
    if (client->getManagementDetails() == kClientUnmanaged)
        walkClients(client, &VobClient::notifyClientRemoved);
}

// Reads the list anew after each call. The place moves on only if it still holds the client just
// called, so that none is skipped when one is removed. Ends when the subject itself has gone.
void Vob::walkClients(VobClient* subject, void (VobClient::*notify)(VobClient*)) {
    const cutroom::NestedTelling nested("Vob");
    if (nested.refused())
        return;
    const cutroom::ClientWatch watch(subject);
    std::size_t place = 0;
    while (place < clients_.size() && watch.alive()) {
        VobClient* const client = clients_[place];
        if (client != subject) {
            try {
                (client->*notify)(subject);
            } catch (...) {
                cutroom::logFailedClient("Vob");
            }
        }
        if (place < clients_.size() && clients_[place] == client)
            ++place;
    }
}

void Vob::sortClients() {
    const CriticalSection::Lock lock(clientLock_);
    const auto misplaced = std::is_sorted_until(clients_.begin(), clients_.end(), higherPriority);
    if (misplaced == clients_.end())
        return;
    listWillChange();
    if (std::next(misplaced) == clients_.end()) {
        const auto place =
            std::upper_bound(clients_.begin(), misplaced, *misplaced, higherPriority);
        std::rotate(place, misplaced, clients_.end());
    } else {
        std::stable_sort(clients_.begin(), clients_.end(), higherPriority);
    }
}

// --- asking --------------------------------------------------------------------------------------

std::size_t Vob::getNumClients() const {
    const CriticalSection::Lock lock(clientLock_);
    return clients_.size();
}

std::size_t Vob::getNumClients(eClientManagementDetails details) const {
    const CriticalSection::Lock lock(clientLock_);
    return static_cast<std::size_t>(
        std::count_if(clients_.begin(), clients_.end(), [&](const VobClient* client) {
            return client->getManagementDetails() == details;
        }));
}

VobClient* Vob::getClientPtr(std::size_t index) const {
    const CriticalSection::Lock lock(clientLock_);
    return index < clients_.size() ? clients_[index] : nullptr;
}

bool Vob::isClient(const VobClient* client) const { return findClient(client) != kNotFound; }

unsigned Vob::findClient(const VobClient* client) const {
    const CriticalSection::Lock lock(clientLock_);
    const auto found = std::find(clients_.begin(), clients_.end(), client);
    return found == clients_.end() ? kNotFound : static_cast<unsigned>(found - clients_.begin());
}

VobClient* Vob::findClient(const LightweightString<char>& name) const {
    const CriticalSection::Lock lock(clientLock_);
    const auto found = std::find_if(clients_.begin(), clients_.end(),
                                    [&](const VobClient* c) { return name == c->idstring(); });
    return found == clients_.end() ? nullptr : *found;
}

VobClient* Vob::findMasterClient() const {
    const CriticalSection::Lock lock(clientLock_);
    const auto found = std::find_if(clients_.begin(), clients_.end(), [](VobClient* client) {
        const auto* const view = dynamic_cast<const iImageViewClient*>(client);
        return view && view->isMaster();
    });
    return found == clients_.end() ? nullptr : *found;
}

void Vob::sendMessageToClient(const LightweightString<char>& name,
                              const LightweightString<char>& message) {
    const Kv::Ptr<Vob> self = keepAlive();
    const CriticalSection::Lock lock(clientLock_);
    VobClient* const client = findClient(name);
    if (!client)
        return;
    try {
        client->handleMessage(message);
    } catch (...) {
        cutroom::logFailedClient("Vob::sendMessageToClient()");
    }
}

// --- moving all clients to another Vob -----------------------------------------------------------

void Vob::transferClients(Vob* from, Vob* to, unsigned flags) {
    if (!from || !to || from == to)
        return;
    VobManager& manager = VobManager::instance();
    std::size_t allowance = std::max<std::size_t>(10'000, 8 * from->getNumClients());
    while (VobClient* const client = from->getClientPtr(0)) {
        if (allowance-- == 0) {
            LogBoth("Vob::transferClients() : clients keep coming back, stopped\n");
            break;
        }
        const cutroom::ClientWatch watch(client);
        manager.closeInternal(client);
        if (watch.alive() && from->getClientPtr(0) == client)
            from->removeClient(client); // its own `setVob` hid the Vob
        if (watch.alive())              // unless one told of its leaving destroyed it
            manager.open(client, to);
    }
    if (flags & kTransferModule) {
        to->setEditModule(from->module_, false);
        to->addModification(kVobEditReplaced);
    }
    if (!(flags & kTransferKeepRoles))
        transferRoles(*from, *to);
}

// Moves the roles without what a role setter does besides. Takes care that no Vob ends up as source
// and record machine at once.
void Vob::transferRoles(Vob& from, Vob& to) {
    VobManager& manager = VobManager::instance();
    const VobModificationBatch batch(&to);
    if (from.hasStatus(kStatusSource)) {
        manager.setSourceMachineRaw(&to);
        to.addModification(kVobBecameSource);
        if (to.hasStatus(kStatusRecord)) {
            manager.setRecordMachineRaw(nullptr);
            to.addModification(kVobLostRecord);
        }
    }
    if (!from.hasStatus(kStatusRecord))
        return;
    if (from.cookie_ != to.cookie_) {
        manager.setRecordMachineRaw(nullptr);
        to.addModification(kVobLostRecord);
        return;
    }
    manager.setRecordMachineRaw(&to);
    to.addModification(kVobBecameRecord);
    if (to.hasStatus(kStatusSource)) {
        manager.setSourceMachineRaw(nullptr);
        to.addModification(kVobLostSource);
    }
}
