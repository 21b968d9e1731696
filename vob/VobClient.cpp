#include "vob/VobClient.h"

#include "platform/host/StringTable.h"
#include "platform/store/Edit.h"
#include "vob/ClientWatch.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"

namespace {

ResId nameOfType(eLogType type) {
    switch (type) {
    case kLogTypeSource:
        return cutroom::kResTypeSource;
    case kLogTypeEdit:
        return cutroom::kResTypeEdit;
    case kLogTypeSyncGhost:
        return cutroom::kResTypeSyncGhost;
    case kLogTypePrintGhost:
        return cutroom::kResTypePrintGhost;
    case kLogTypeSubclip:
        return cutroom::kResTypeSubclip;
    case kLogTypeFileCopy:
        return cutroom::kResTypeFileCopy;
    case kLogTypeClipSection:
        return cutroom::kResTypeClipSection;
    default:
        return cutroom::kResTypeOther;
    }
}

} // namespace

// --- life ----------------------------------------------------------------------------------------

VobClient::VobClient() : uid_(IdStamp::make()) {}

VobClient::VobClient(Vob* vob, eClientPriority priority, eClientManagementDetails details)
    : priority_(priority), details_(details), uid_(IdStamp::make()) {
    if (vob)
        VobManager::instance().open(this, VobManager::VobPtr(vob));
}

VobClient::VobClient(Cookie edit, Vob* vob, eClientPriority priority,
                     eClientManagementDetails details)
    : VobClient(vob, priority, details) {
    if (!vob && edit.valid())
        VobManager::instance().create(this, edit);
}

// After the host is uninstalled there is neither a manager nor a Vob to leave.
VobClient::~VobClient() {
    VobManager* const manager = VobManager::existing();
    if (manager)
        manager->removeStickyClient(this);
    if (vob_)
        (manager ? *manager : VobManager::instance()).close(this, false);
    cutroom::ClientWatch::gone(this);
}

// --- what heirs may override ---------------------------------------------------------------------

Cookie VobClient::getContainerID() const { return {}; }

LightweightVector<AssetReference> VobClient::getCookies() const {
    if (!getCookie().valid())
        return {};
    const EditModule& module = vob_->getEditModule();
    if (module.isMarked())
        return {AssetReference(getCookie(), module.getMarkedRegion())};
    return {AssetReference(getCookie())};
}

LightweightString<wchar_t> VobClient::getName() const {
    const EditPtr edit = getEdit();
    return edit ? edit->getName() : resourceStrW(cutroom::kResNoEdit);
}

LightweightString<wchar_t> VobClient::getTypeName() const {
    const EditPtr edit = getEdit();
    return edit ? resourceStrW(nameOfType(edit->getLogType())) : LightweightString<wchar_t>();
}

bool VobClient::add(const LightweightVector<AssetReference>& assets) {
    return iCookieContainer::add(assets);
}

bool VobClient::containsType(CookieType type) const { return iCookieContainer::containsType(type); }

void VobClient::handleModifications(const EditModifications&, const VobModification&) {}
void VobClient::notifyClientAdded(VobClient*) {}
void VobClient::notifyClientRemoved(VobClient*) {}
void VobClient::notifyPlayStateChange(PlayStateNotifyType) {}
void VobClient::notifyOtherEditAltered(const Cookie&, const EditModifications&) {}
void VobClient::handleConsoleFocus(bool) {}
void VobClient::handleMessage(const LightweightString<char>&) {}

bool VobClient::isAutoDestroyable(VobClient*) const { return details_ == kClientUnmanaged; }

void VobClient::debug() {}

const char* VobClient::idstring() const { return "VobClient"; }

LightweightVector<VobClient*> VobClient::getManagedClients() { return {}; }

void VobClient::setVob(Vob* vob) { vob_ = vob; }

// --- of the interfaces ---------------------------------------------------------------------------

Cookie VobClient::getAssetID() const { return getCookie(); }

AssetReference VobClient::getAssetReference() const {
    const LightweightVector<AssetReference> assets = getCookies();
    return assets.empty() ? AssetReference() : assets.front();
}

LightweightString<wchar_t> VobClient::getAssetName() const { return getName(); }

eLogType VobClient::getLogType() const {
    const EditPtr edit = getEdit();
    return edit ? edit->getLogType() : kLogTypeNone;
}

// --- fixed ---------------------------------------------------------------------------------------

void VobClient::setPriority(eClientPriority priority) {
    priority_ = priority;
    if (vob_)
        vob_->sortClients();
}

Cookie VobClient::getCookie() const { return vob_ ? vob_->getCookie() : Cookie(); }

EditPtr VobClient::getEdit() const { return vob_ ? vob_->getEdit() : EditPtr(); }

EditModule VobClient::getEditModule() const { return vob_ ? vob_->getEditModule() : EditModule(); }

LightweightString<char> VobClient::getGroup() const {
    return vob_ ? vob_->getGroupId() : LightweightString<char>();
}
