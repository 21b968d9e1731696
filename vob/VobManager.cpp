// The Vobs of the program: made, found, closed; clients attached and detached.
#include "vob/VobManager.h"

#include "platform/base/Log.h"
#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "platform/messaging/UiThread.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/Edit.h"
#include "vob/ClientWatch.h"

#include <algorithm>
#include <cassert>

using cutroom::ClientWatch;

VobManager& VobManager::instance() { return cutroom::ProcessSingleton<VobManager>::get(); }

VobManager* VobManager::existing() noexcept {
    return cutroom::ProcessSingleton<VobManager>::find();
}

VobManager::VobManager() {
    NotifyMsgTypeDictionary& types = NotifyMsgTypeDictionary::instance();
    focusChanged_ = types.intern("focusChanged");
    sourceChanged_ = types.intern("sourceChanged");
    recordChanged_ = types.intern("recordChanged");
    // Listeners ask it, and it must not be made under a notifier's lock.
    PermissionsManager::instance();
    registerWithEditManager();
}

// A client that is told here that playing stops may close Vobs, and what is destroyed along with a
// Vob may call the manager; so both happen while all members are still there.
VobManager::~VobManager() {
    for (const VobPtr& vob : VobVec(vobs_)) // it may still be held elsewhere
        vob->registerWithPlayServer(false);
    for (VobPtr* const role : {&record_, &source_, &previousSource_, &play_})
        role->reset();
    VobVec().swap(vobs_);
}

// --- making and finding Vobs ---------------------------------------------------------------------

VobManager::VobPtr VobManager::append(VobPtr vob) {
    assert(cutroom::isUiThread());
    vobs_.push_back(vob);
    return vob;
}

VobManager::VobPtr VobManager::createVob(const EditModule& module,
                                         LightweightString<char> groupId) {
    return append(Kv::makePtr<Vob>(module, std::move(groupId)));
}

VobManager::VobPtr VobManager::createVob(const Cookie& edit, LightweightString<char> groupId) {
    return append(Kv::makePtr<Vob>(edit, std::move(groupId)));
}

VobManager::VobPtr VobManager::createVob(const EditPtr& edit, LightweightString<char> groupId) {
    return append(Kv::makePtr<Vob>(edit, std::move(groupId)));
}

VobManager::VobPtr VobManager::create(VobClient* client, const Cookie& edit,
                                      LightweightString<char> groupId) {
    if (!client || client->getVob())
        return client ? client->getVob() : nullptr;
    VobPtr vob;
    for (const VobPtr& candidate : vobs_)
        if (!vob && edit.valid() && candidate->getCookie() == edit &&
            (groupId.empty() || candidate->getGroupId() == groupId))
            vob = candidate;
    if (!vob)
        vob = createVob(edit, std::move(groupId));
    open(client, vob);
    return vob;
}

VobManager::VobPtr VobManager::create(VobClient* client, const VobPtr& vob) {
    if (!client || client->getVob())
        return client ? client->getVob() : nullptr;
    VobPtr opened = vob ? vob : createVob(EditPtr());
    open(client, opened);
    return opened;
}

VobManager::VobVec VobManager::getAllVobs(const Cookie& edit) const {
    VobVec viewing;
    for (const VobPtr& vob : vobs_)
        if (!edit.valid() || vob->getCookie() == edit)
            viewing.push_back(vob);
    return viewing;
}

VobManager::VobPtr VobManager::getVobWithCookie(const Cookie& edit) const {
    const auto found = std::find_if(vobs_.begin(), vobs_.end(), [&](const VobPtr& vob) {
        return edit.valid() && vob->getCookie() == edit;
    });
    return found == vobs_.end() ? VobPtr() : *found;
}

VobManager::VobPtr VobManager::getVobWithId(const LightweightString<char>& groupId) const {
    const auto found = std::find_if(vobs_.begin(), vobs_.end(), [&](const VobPtr& vob) {
        return vob->getGroupId() == groupId;
    });
    return found == vobs_.end() ? VobPtr() : *found;
}

VobManager::VobPtr VobManager::getVobWithId(int legacyId) const {
    const auto found = std::find_if(vobs_.begin(), vobs_.end(), [&](const VobPtr& vob) {
        return legacyId >= 0 && vob->getLegacyGroupId() == legacyId;
    });
    return found == vobs_.end() ? VobPtr() : *found;
}

LightweightString<char> VobManager::getVobIdForLegacyId(int legacyId) const {
    const VobPtr vob = getVobWithId(legacyId);
    return vob ? vob->getGroupId() : LightweightString<char>();
}

unsigned VobManager::numRefs(const Cookie& edit) const {
    return static_cast<unsigned>(std::count_if(
        vobs_.begin(), vobs_.end(), [&](const VobPtr& vob) { return vob->getCookie() == edit; }));
}

// --- closing Vobs --------------------------------------------------------------------------------

bool VobManager::isOpen(const Vob& vob) const {
    return std::find(vobs_.begin(), vobs_.end(), &vob) != vobs_.end();
}

bool VobManager::closeVob(VobPtr closing, bool force) {
    assert(cutroom::isUiThread());
    const VobPtr vob = std::move(closing);
    if (!vob || !isOpen(*vob) || (vob->getNumClients() != 0 && !force))
        return false;
    if (numRefs(vob->getCookie()) == 1)
        saveViewStateInEdit(vob);
    removeFocusFrom(vob.get());
    std::erase(vobs_, vob);
    // A client that was told may have given it a role again.
    if (vob->getStatus() != 0 || previousSource_ == vob)
        removeFocusFrom(vob.get());
    return true;
}

bool VobManager::destroyManagedClients(const VobPtr& vob) {
    if (!vob)
        return true;
    const VobPtr keep = vob;
    const auto firstManaged = [&keep]() -> VobClient* {
        for (std::size_t i = 0; VobClient* const client = keep->getClientPtr(i); ++i)
            if (client->getManagementDetails() != kClientUnmanaged)
                return client;
        return nullptr;
    };
    for (std::size_t left = keep->getNumClients(); left > 0; --left)
        if (VobClient* const client = firstManaged())
            close(client, true);
    return keep->getNumClients() == 0;
}

// --- attaching and detaching ---------------------------------------------------------------------

void VobManager::open(VobClient* client, VobPtr wanted) {
    assert(cutroom::isUiThread());
    const VobPtr vob = std::move(wanted);
    if (!client || !vob || client->getVob())
        return;
    const ClientWatch watch(client);
    vob->addClient(client);
    // A client that is told of the new one may destroy or move it, or those that it manages.
    for (std::size_t i = 0; watch.alive() && client->getVob() == vob.get(); ++i) {
        const LightweightVector<VobClient*> managed = client->getManagedClients();
        if (i >= managed.size())
            return;
        open(managed[i], vob);
    }
}

void VobManager::open(VobClient* client, const LightweightString<char>& vobId) {
    open(client, getVobWithId(vobId));
}

void VobManager::open(VobClient* client, int legacyId) { open(client, getVobWithId(legacyId)); }

void VobManager::detach(Vob& vob, VobClient* client) {
    const ClientWatch watch(client);
    vob.removeClient(client);
    // A client that was told may have destroyed this one, or opened it again.
    if (watch.alive() && client->getVob() == &vob && !vob.isClient(client))
        client->setVob(nullptr);
}

void VobManager::closeInternal(VobClient* client) {
    assert(cutroom::isUiThread());
    if (!client || !client->getVob())
        return;
    const VobPtr vob = client->getVob();
    const ClientWatch watch(client);
    for (std::size_t i = 0; watch.alive(); ++i) {
        const LightweightVector<VobClient*> managed = client->getManagedClients();
        if (i >= managed.size())
            break;
        if (managed[i] != client)
            closeInternal(managed[i]);
    }
    if (watch.alive() && client->getVob() == vob.get())
        detach(*vob, client);
}

void VobManager::close(VobClient* client, bool destroy) {
    if (!client)
        return;
    const ClientWatch watch(client);
    if (const VobPtr vob = client->getVob()) {
        closeInternal(client);
        closeIfAbandoned(vob);
    }
    if (destroy && watch.alive())
        delete client;
}

// Closes a Vob that only managed clients show. It stays open when its clients keep coming back, or
// when an unmanaged one joins meanwhile.
void VobManager::closeIfAbandoned(const VobPtr& vob) {
    const CriticalSection::Lock lock(vob->clientLock_);
    for (std::size_t left = vob->getNumClients(); left > 0; --left) {
        if (vob->getNumClients(kClientUnmanaged) != 0)
            return;
        VobClient* const client = vob->getClientPtr(0);
        closeInternal(client);
        if (client && vob->getClientPtr(0) == client)
            detach(*vob, client); // its own `setVob` hid the Vob
    }
    closeVob(vob, false);
}

// --- moving --------------------------------------------------------------------------------------

void VobManager::moveToVob(VobClient* client, VobPtr wanted) {
    const VobPtr vob = std::move(wanted);
    if (!client || !vob || client->getVob() == vob.get())
        return;
    const ClientWatch watch(client);
    const VobPtr from = client->getVob();
    closeInternal(client);
    if (watch.alive())
        open(client, vob);
    if (from)
        closeIfAbandoned(from);
}

VobManager::VobPtr VobManager::moveToNewVob(VobClient* client, bool keepModule, bool sameGroup) {
    if (!client || !client->getVob())
        return {};
    const Vob& from = *client->getVob();
    const LightweightString<char> group = sameGroup ? from.getGroupId() : LightweightString<char>();
    VobPtr vob =
        keepModule ? createVob(from.getEditModule(), group) : createVob(from.getEdit(), group);
    moveToVob(client, vob);
    return vob;
}

// --- groups --------------------------------------------------------------------------------------

VobManager::VobVec VobManager::getVobGroup(const VobPtr& vob) const {
    VobVec group;
    if (!vob)
        return group;
    for (const VobPtr& member : vobs_)
        if (member->getGroupId() == vob->getGroupId())
            group.push_back(member);
    return group.empty() ? VobVec{vob} : group;
}

VobManager::VobVec VobManager::getPlaybackGroup(const VobPtr& vob) const {
    VobVec group = getVobGroup(vob);
    std::erase_if(group,
                  [](const VobPtr& member) { return !member->canAcceptStatus(Vob::kStatusPlay); });
    return group;
}

bool VobManager::isGrouped(const VobPtr& vob) const { return getVobGroup(vob).size() > 1; }

Kv::FrameRate VobManager::getGroupFrameRate(const VobPtr& vob) const {
    Kv::FrameRate highest;
    for (const VobPtr& member : getVobGroup(vob)) {
        const EditPtr edit = member->getEdit();
        if (edit && edit->getFrameRate().asDouble() > highest.asDouble())
            highest = edit->getFrameRate();
    }
    return highest;
}

// --- diagnostics ---------------------------------------------------------------------------------

void VobManager::debugVobs() {
    LogBoth("VOB DEBUG IS GO: %d vobs to debug\n", static_cast<int>(vobs_.size()));
    for (const VobPtr& vob : VobVec(vobs_))
        vob->debug(nullptr);
    LogBoth("END VOB DEBUG\n");
}
