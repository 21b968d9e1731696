// Sticky clients: they follow a role from Vob to Vob.
#include "vob/ClientWatch.h"
#include "vob/VobManager.h"

#include <algorithm>

using cutroom::ClientWatch;

void VobManager::addStickyClient(VobClient* client, eSignificantViewType role) {
    if (!client || isSticky(client, role))
        return;
    sticky_.push_back({client, role});
    if (const VobPtr holder = getVob(role))
        updateStickyClient(client, holder);
}

void VobManager::removeStickyClient(VobClient* client) {
    std::erase_if(sticky_, [&](const StickyClient& sticky) { return sticky.client == client; });
}

void VobManager::removeStickyClient(VobClient* client, eSignificantViewType role) {
    std::erase_if(sticky_, [&](const StickyClient& sticky) {
        return sticky.client == client && sticky.role == role;
    });
}

bool VobManager::isStickyClient(VobClient* client) const {
    return std::any_of(sticky_.begin(), sticky_.end(),
                       [&](const StickyClient& sticky) { return sticky.client == client; });
}

bool VobManager::isSticky(const VobClient* client, eSignificantViewType role) const {
    return std::any_of(sticky_.begin(), sticky_.end(), [&](const StickyClient& sticky) {
        return sticky.client == client && sticky.role == role;
    });
}

// The Vob that it leaves stays open: it is the role that moved on, not its viewer.
void VobManager::updateStickyClient(VobClient* client, const VobPtr& vob) {
    if (!client || client->getVob() == vob.get())
        return;
    VobPtr to = vob;
    const ClientWatch watch(client);
    closeInternal(client);
    if (watch.alive())
        open(client, std::move(to));
}

// Works on a copy and asks again for each client: one that is told on the way may change the list
// or the role, or destroy others.
void VobManager::updateStickyClients(eSignificantViewType role) {
    const std::vector<StickyClient> atStart = sticky_;
    for (const StickyClient& sticky : atStart)
        if (sticky.role == role && isSticky(sticky.client, role))
            updateStickyClient(sticky.client, getVob(role));
}
