#include "vob/Vob.h"

#include "platform/base/Log.h"
#include "platform/messaging/UIThreadCallback.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "vob/EventMemory.h"
#include "vob/SubframeCheck.h"
#include "vob/TrimObj.h"
#include "vob/VobManager.h"
#include "vob/VobPlayable.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace {

constexpr char kTrimViewPreference[] = "Trimview enabled";

// The arrangement of the windows is the user's; only in the first does the trim view follow the
// preference.
Vob::eTrimViewType defaultTrimViewType() {
    if (EditorPreferences::getPreference("Window arrangement", 0) != 0)
        return Vob::kTrimViewFull;
    static const auto& byDefault =
        *new cutroom::ConfigValue<int>("trimview_default", 1); // never destroyed
    const int type = EditorPreferences::getPreference(kTrimViewPreference, byDefault.get());
    return static_cast<Vob::eTrimViewType>(type);
}

} // namespace

// --- life ----------------------------------------------------------------------------------------

Vob::Vob(const EditModule& module, LightweightString<char> groupId) : groupId_(std::move(groupId)) {
    init();
    setEdit(module.getEdit(), false);
    if (module.valid())
        setEditModule(module, false);
}

Vob::Vob(const Cookie& edit, LightweightString<char> groupId) : groupId_(std::move(groupId)) {
    init();
    cookie_ = edit;
    setEdit(EditPtr(edit), false);
}

Vob::Vob(const EditPtr& edit, LightweightString<char> groupId) : groupId_(std::move(groupId)) {
    init();
    setEdit(edit, false);
}

Vob::Vob(const Vob* other) : Vob(other ? other->module_ : EditModule()) {}

Vob::Vob(const Vob& other)
    : Kv::InternalRefCount(), iVirtual(), iObject(), Notifiable(), EventHandler(),
      ConsoleEventHandler() {
    groupId_ = other.groupId_;
    legacyGroupId_ = other.legacyGroupId_;
    init();
    eligibility_ = other.eligibility_;
    levelsBound_ = other.levelsBound_;
    videoPreviews_ = other.videoPreviews_;
    previewTrack_ = other.previewTrack_;
    monitorPoint_ = other.monitorPoint_;
    trimViewType_ = other.trimViewType_;
    cueFilter_ = other.cueFilter_;
    setEdit(other.edit_, false);
    setEditModule(other.module_, false);
    viewRegion_ = other.viewRegion_;
}

void Vob::init() {
    trimViewType_ = defaultTrimViewType();
    if (groupId_.empty())
        groupId_ = makeUniqueID();
    cutroom::readSubframeWarnings();
    cueFilter_ = CueFilter(4, -2049);
    eventMemory_ = std::make_unique<cutroom::EventMemory>();
    playable_ = std::make_unique<cutroom::VobPlayable>(*this);
    keepRegistration(CurrentProject::addListener(
        makeUIThreadCallback<NotifyMsg>([this](const NotifyMsg& m) { handleProjectExit(m); }),
        CurrentProject::exitedMsgType()));
}

// Clients are detached first, so that none of them is told that playing stops. A client that is
// detached may destroy others.
Vob::~Vob() {
    endRegistrations();
    editRegistration_.reset();
    {
        CriticalSection::Lock lock(clientLock_);
        while (!clients_.empty()) {
            VobClient* const client = clients_.front();
            clients_.erase(clients_.begin());
            client->setVob(nullptr);
        }
    }
    playable_.reset();
}

void Vob::onLastRelease() const noexcept {
    if (dying_.exchange(true))
        return;
    if (cutroom::isUiThread()) {
        destroyWhenTold();
        return;
    }
    try {
        // Once, even with a loop that runs what was posted twice.
        cutroom::postToUiThread([this, due = std::make_shared<bool>(true)] {
            if (std::exchange(*due, false))
                destroyWhenTold();
        });
    } catch (...) {
        LogBoth("Vob: no memory to destroy a viewed edit\n"); // it stays, harmlessly
    }
}

// Deletes this at once, or leaves that to the outermost telling under way. A Vob of which somebody
// (a client that was told, for example) has taken a share again in the meantime is kept.
CUTROOM_NO_THREAD_SAFETY void Vob::destroyWhenTold() const noexcept {
    diesAfterTelling_ = tellings_ != nullptr;
    if (diesAfterTelling_)
        return;
    dying_ = false;
    if (refCount() == 0 && !dying_.exchange(true))
        delete this;
}

LightweightString<char> Vob::makeUniqueID() { return IdStamp::make().asString(); }

// Releases the edit, since a Vob that is still held must not keep an edit of a closed project open.
void Vob::handleProjectExit(const NotifyMsg&) {
    releaseEdit();
    cookie_ = Cookie();
    setPreviewing(false, false);
    viewEdits_.clear();
    stills_.clear();
}

// --- state ---------------------------------------------------------------------------------------

bool Vob::isReadOnly() const {
    return !edit_ || PermissionsManager::instance().isReadOnly(cookie_) || edit_->isReadOnly();
}

bool Vob::isEditable() const { return hasStatus(kStatusRecord) && !isReadOnly(); }

bool Vob::hasChanOfType(EditChanType type, bool selectedOnly, bool withMaterial) const {
    if (!edit_)
        return false;
    const std::vector<IdStamp> channels = edit_->getChans(type);
    return std::any_of(channels.begin(), channels.end(), [&](const IdStamp& channel) {
        if (selectedOnly && !module_.isSelected(channel))
            return false;
        const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel);
        return !withMaterial || (cel && cel->get_num_events() > 0);
    });
}

void Vob::registerWithPlayServer(bool on) { playable_->setRegistered(on); }

void Vob::setConsoleTabStops(unsigned stops) {
    if (stops != tabStops_.getValue())
        tabStops_ = stops;
}

void Vob::setVisibleCuesFilter(const CueFilter& filter) {
    if (!edit_ || filter == cueFilter_)
        return;
    cueFilter_ = filter;
    addModification(kVobCueFilter);
}

void Vob::setViewEdits(std::vector<EditPtr> edits) {
    if (!edit_ || edits == viewEdits_)
        return;
    viewEdits_ = std::move(edits);
    addModification(kVobViewEdits);
}

void Vob::setCustomStillsProviders(StillsProviders providers) {
    if (!edit_ || providers == stills_)
        return;
    stills_ = std::move(providers);
    addModification(kVobStills);
}

void Vob::informImpendingRevision() {
    if (edit_)
        addModification(kVobImpendingRevision);
}

Cookie Vob::getMasterViewCookie() const {
    return viewEdits_.empty() || !viewEdits_.front() ? cookie_ : viewEdits_.front().getCookie();
}

void Vob::handleConsoleFocus() { informFocusChanged(hasConsoleFocus()); }

// --- trimming ------------------------------------------------------------------------------------

void Vob::setDefaultTrimViewType(eTrimViewType type) {
    EditorPreferences::setPreference(kTrimViewPreference, static_cast<int>(type));
}

bool Vob::isTrimViewPossible() const {
    static const auto& enabled =
        *new cutroom::ConfigValue<int>("trimview_enabled", 1); // never destroyed
    if (enabled.get() == 0 || trimViewType_ == kTrimViewOff)
        return false;
    return TrimObj(const_cast<Vob&>(*this)).isTrimViewPossible();
}
