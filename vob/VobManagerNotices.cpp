// What the edit store tells: changes and deletions of edits, and the project's exit.
#include "platform/base/Log.h"
#include "platform/base/Strings.h"
#include "platform/messaging/Callback.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "vob/VobManager.h"

#include <algorithm>

namespace {

// Changes of an edit that may matter where another edit is shown.
constexpr auto kMattersElsewhere =
    EditModifications::bit(kModName) | EditModifications::bit(kModMedia) |
    EditModifications::bit(kModLogType) | EditModifications::bit(kModOriginalMaterial) |
    EditModifications::bit(kModImported) | EditModifications::bit(kModReadOnly);

// Tells whether the edit is source material, whose metadata shows wherever it is cut in. A fresh
// copy is not cut in anywhere yet.
bool isSourceMaterial(const Cookie& cookie) {
    if (!EditManager::instance().isOpen(cookie))
        return false;
    const EditPtr edit(cookie);
    return edit && edit->get_original_material() != 0;
}

bool mattersElsewhere(const Cookie& edit, const EditModifications& changes) {
    return changes.includesAnyOf(kMattersElsewhere) ||
           (changes.includes(kModMetadata) && isSourceMaterial(edit));
}

// The cookies that a notice of deletion lists.
CookieVec listedIn(const NotifyMsg& message) {
    CookieVec edits;
    for (const std::string& piece : cutroom::split(message.getText(), ' '))
        if (const auto edit = Cookie::fromString(piece); edit && edit->valid())
            edits.push_back(*edit);
    return edits;
}

} // namespace

void VobManager::registerWithEditManager() {
    EditManager& edits = EditManager::instance();
    const auto on = [this](void (VobManager::*handler)(const NotifyMsg&)) {
        return makeCallback(this, handler);
    };
    registrations_ = {
        edits.registerNotification(on(&VobManager::prepareForEditDeletion),
                                   kNoticePrepareForDeletion),
        edits.registerNotification(on(&VobManager::handleEditDeletion), kNoticeDeletion),
        edits.registerNotification(on(&VobManager::handleProjectExit), kNoticeProjectExit),
        edits.registerNotification(on(&VobManager::handleEditModifications), kNoticeModifications,
                                   &VobManager::editModificationFilter),
    };
}

// --- changes -------------------------------------------------------------------------------------

// Passes a copy of the cookie on: `edit` may refer to that of a Vob, and a client that is told may
// make that Vob view another edit.
void VobManager::informEditAltered(const Cookie& edit, const EditModifications& editChanges,
                                   const VobModification& change) {
    informEditAlteredInternal(Cookie(edit), editChanges, change);
}

void VobManager::informEditAlteredInternal(const Cookie& edit, const EditModifications& editChanges,
                                           const VobModification& change) {
    const bool tellOthers = mattersElsewhere(edit, editChanges);
    for (const VobPtr& vob : VobVec(vobs_)) {
        if (vob->getCookie() == edit)
            informVobOfEditAlteration(vob, editChanges, change);
        else if (tellOthers)
            vob->informOtherEditAltered(edit, editChanges);
    }
}

void VobManager::informVobOfEditAlteration(VobPtr viewing, const EditModifications& editChanges,
                                           const VobModification& change) {
    const VobPtr vob = std::move(viewing);
    if (!vob)
        return;
    const EditPtr held = vob->getEdit();
    vob->preNotifyClients(editChanges, change);
    vob->informClients(editChanges, change);
}

void VobManager::saveViewStateInEdit(VobPtr viewing) {
    const VobPtr vob = std::move(viewing);
    if (vob && vob->hasEdit() && PermissionsManager::instance().canWrite(vob->getCookie()))
        vob->storeViewState();
}

// Lets through only notices that say which edit changed, and how.
bool VobManager::editModificationFilter(const NotifyMsg& message) {
    const auto* const notice = message.getObjectAs<EditModificationNotice>();
    return notice && notice->edit().valid() && !notice->modifications().empty();
}

void VobManager::handleEditModifications(const NotifyMsg& message) {
    if (const auto* const notice = message.getObjectAs<EditModificationNotice>())
        informEditAlteredInternal(notice->edit(), notice->modifications(), VobModification(0));
}

// --- deletion ------------------------------------------------------------------------------------

void VobManager::prepareForEditDeletion(const NotifyMsg& message) {
    for (const Cookie& edit : listedIn(message))
        for (const VobPtr& vob : getAllVobs(edit))
            vob->informClients(EditModifications(kModDeleted), VobModification(0));
}

void VobManager::handleEditDeletion(const NotifyMsg& message) {
    for (const Cookie& edit : listedIn(message))
        for (const VobPtr& vob : VobVec(vobs_))
            vob->informOtherEditAltered(edit, EditModifications(kModDeleted));
}

// --- the project's exit --------------------------------------------------------------------------

void VobManager::handleProjectExit(const NotifyMsg&) {
    std::size_t allowance = std::max<std::size_t>(10'000, 8 * vobs_.size());
    while (!vobs_.empty()) {
        if (allowance-- == 0) {
            LogBoth("VobManager::handleProjectExit() : Vobs keep coming, stopped\n");
            VobVec().swap(vobs_); // without telling anybody
            break;
        }
        const VobPtr vob = vobs_.front();
        if (closeVob(vob, false) || destroyManagedClients(vob))
            continue;
        for (std::size_t left = vob->getNumClients(); left > 0; --left)
            if (VobClient* const client = vob->getClientPtr(0))
                close(client, true);
        closeVob(vob, true); // even when other clients have come meanwhile
    }
    record_.reset();
    source_.reset();
    previousSource_.reset();
    play_.reset();
}
