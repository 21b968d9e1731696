// How a Vob takes, replaces and releases the edit that it views, and its module.
#include "audio/MixSelections.h"
#include "editops/basics/EmptyEdit.h"
#include "platform/base/Log.h"
#include "platform/messaging/UIThreadCallback.h"
#include "platform/store/Edit.h"
#include "vob/EventMemory.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"
#include "vob/VobModificationBatch.h"

namespace {

constexpr unsigned char kEmptyVideoChans = 1;
constexpr unsigned char kEmptyAudioChans = 4;
constexpr char kShowCelCues[] = "SHOW_CEL_CUES";

} // namespace

void Vob::setEdit(const EditPtr& edit, bool keepModule) {
    const Kv::Ptr<Vob> self = keepAlive();
    const EditPtr wanted = edit; // a copy: `edit` may be a view edit, which clients may replace
    const EditModule saved = module_;
    clearSelectedSegments();
    takeEdit(wanted);
    if (edit_) {
        if (keepModule)
            setEditModule(saved, false);
        else
            setupFromEdit();
    }
    beginModifications();
    constexpr unsigned kTellBoth = VobManager::kTellOld | VobManager::kTellNew;
    if (hasStatus(kStatusRecord))
        VobManager::instance().setRecordMachine(this, kTellBoth);
    else if (hasStatus(kStatusSource))
        VobManager::instance().setSourceMachine(this, kTellBoth);
    if (hasStatus(kStatusPlay))
        VobManager::instance().setPlayMachine(this, true);
    addModification(kVobEditReplaced);
    endModifications();
}

// Without `edit` a new empty one is made, under the Vob's cookie when it has one by now.
void Vob::takeEdit(const EditPtr& edit) {
    EditPtr wanted = edit;
    decltype(selections_) keptSelections;
    decltype(levelNodes_) keptNodes;
    if (edit_) {
        if (wanted == edit_) {
            keptSelections.swap(selections_);
            keptNodes.swap(levelNodes_);
        }
        releaseEdit();
        cookie_ = Cookie();
    }
    if (!wanted) {
        if (!cookie_.valid())
            cookie_ = Cookie::make('E');
        wanted = createEmptyEdit(cookie_, {}, kEmptyVideoChans, kEmptyAudioChans, kNoTime, {});
    }
    edit_ = wanted;
    cookie_ = edit_.getCookie();
    selections_.swap(keptSelections);
    levelNodes_.swap(keptNodes);
    registerWithEdit();
    module_ = EditModule(edit_);
    timeMirror_ = edit_ ? module_.getCurrentTime() : kNoTime;
    extents_ = editRange();
    viewRegion_ = extents_;
    resynchroniseWithEdit();
}

// Clients hear of changes through the manager. This registration keeps the Vob's own state in line
// with every change, even one that the manager does not pass on.
void Vob::registerWithEdit() {
    if (edit_)
        editRegistration_ = edit_->registerNotification(
            makeUIThreadCallback<NotifyMsg>([this](const NotifyMsg& message) {
                const auto* const notice = message.getObjectAs<EditModificationNotice>();
                if (notice && notice->modifications().structureChanged())
                    resynchroniseWithEdit();
            }),
            kNoticeModifications);
}

void Vob::releaseEdit() {
    editRegistration_.reset();
    selections_.clear();
    levelNodes_.clear();
    eventMemory_ = std::make_unique<cutroom::EventMemory>();
    module_ = EditModule();
    timeMirror_ = kNoTime;
    celCuesLoaded_ = false;
    edit_.reset();
}

void Vob::setupFromEdit() {
    if (!edit_)
        return;
    storeTime(edit_->getStoredCurrentTime());
    for (const auto type : {Kv::MarkTypes::In, Kv::MarkTypes::Out})
        markAllAt(edit_->getStoredMark(type), type);
    restoreViewRegion();
    if (const auto show = edit_->getConfig(kShowCelCues); show && cutroom::leadingInt(*show) != 0)
        cel_cues_on();
    selectTracksFromAudioMix(module_);
}

void Vob::setEditModule(const EditModule& module, bool notify) {
    if (!edit_)
        return;
    const Kv::Ptr<Vob> self = keepAlive();
    const double before = module_.getCurrentTime();
    if (module.getEdit() == edit_) {
        module_ = module;
    } else {
        module_.setCurrentTime(module.getCurrentTime());
        for (const auto type : {Kv::MarkTypes::In, Kv::MarkTypes::Out})
            markAllAt(module.getMark(type), type);
    }
    storeTime(module_.getCurrentTime());
    if (levelsBound_)
        module_.initLevelsFromAudio();
    if (notify) {
        const bool moved = module_.getCurrentTime() != before;
        addModification(kVobMarks | kVobSelection | (moved ? unsigned{kVobTime} : 0u));
    }
    updateAudioMix();
}

void Vob::updateAudioMix() {
    if (edit_)
        updateAudioMixFromSelections(module_);
}

void Vob::cel_cues_on() {
    if (!edit_)
        return;
    edit_->celCuesOn();
    edit_->setConfig(kShowCelCues, 1);
    celCuesLoaded_ = true;
}

void Vob::cel_cues_off() {
    if (!edit_)
        return;
    edit_->celCuesOff();
    edit_->setConfig(kShowCelCues, 0);
    celCuesLoaded_ = false;
}

bool Vob::addCue(const Cue& cue, const LightweightString<char>& origin) {
    const Kv::Ptr<Vob> self = keepAlive();
    if (!edit_ || !edit_->addCue(cue, origin))
        return false;
    addModification(kVobMarks);
    return true;
}

// --- following the edit --------------------------------------------------------------------------

// What is dropped goes with the next telling of the edit's own.
void Vob::verifyTrackSelections() {
    const auto isGone = [&](const auto& entry) {
        return !edit_ || !edit_->isValidChan(entry.first);
    };
    for (const auto& entry : selections_)
        if (isGone(entry))
            carried_ |= (entry.second.anySegments() ? unsigned{kVobSegments} : 0u) |
                        (entry.second.getUnjoinedCuts().empty() ? 0u : unsigned{kVobCuts});
    std::erase_if(selections_, isGone);
    if (std::erase_if(levelNodes_, isGone) > 0)
        carried_ |= kVobLevelNodes;
}

void Vob::resynchroniseWithEdit() {
    verifyTrackSelections();
    if (edit_ && previewTrack_.valid() && !edit_->isValidChan(previewTrack_))
        previewTrack_ = IdStamp();
}

void Vob::preNotifyClients(const EditModifications& editChanges, const VobModification&) {
    if (!edit_)
        return;
    if (editChanges.structureChanged()) {
        resynchroniseWithEdit();
        followStructure(editChanges);
    }
    if (editChanges.includes(kModLength) || editChanges.includes(kModStartTime) ||
        (editChanges.includes(kModGeneral) && edit_->getLogType() == kLogTypeSpecial))
        followExtents();
    constexpr auto kPointsMoved =
        EditModifications::bit(kModEventsAdded) | EditModifications::bit(kModEventsRemoved) |
        EditModifications::bit(kModEventsTrimmed) | EditModifications::bit(kModRestored) |
        EditModifications::bit(kModFlattened);
    if (editChanges.includesAnyOf(kPointsMoved))
        followPoints();
    // A client that was told of the region above may have closed the project.
    if (edit_ && editChanges.contentReplaced() && edit_->isClipboard())
        followClipboard();
}

void Vob::followStructure(const EditModifications& editChanges) {
    if (deselectAllLevelNodes())
        carried_ |= kVobLevelNodes;
    if (dropSelectedSegments())
        carried_ |= kVobSegments;
    if (!editChanges.includes(kModChannelsAdded))
        return;
    for (const auto type : {Kv::MarkTypes::In, Kv::MarkTypes::Out})
        if (const double mark = module_.getMark(type); mark != kNoTime)
            markAllAt(mark, type);
}

void Vob::followExtents() {
    const bool showedAll = viewRegion_ == extents_;
    extents_ = editRange();
    LogBoth("Edit extents: %.1f to %.1f\n", extents_.getStart(), extents_.getEnd());
    if (showedAll)
        setViewRegion(extents_, true);
}

void Vob::followPoints() {
    if (verifyUnjoinedCuts())
        carried_ |= kVobCuts;
    if (deselectAllLevelNodes())
        carried_ |= kVobLevelNodes;
    for (auto& [channel, selections] : selections_)
        if (selections.verifySegments())
            carried_ |= kVobSegments;
}

void Vob::followClipboard() {
    storeTime(0);
    const double end = edit_->getEndTime();
    for (const IdStamp& channel : module_.getSelectedChans())
        storeMarkTime(channel, end, Kv::MarkTypes::In);
}
