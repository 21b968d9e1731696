// A sync group viewed together: what is played, switching, and where the clips are viewed.
#include "sync/MulticamSynchroniser.h"

#include "platform/messaging/UiThread.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "vob/VobManager.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace {

constexpr char kLimitKey[] = "Multicam : concurrent limit";
constexpr char kPreserveAudioKey[] = "Multicam : preserve audio";
constexpr char kSharedMarkersKey[] = "Multicam : shared markers";

} // namespace

MulticamSynchroniser::MulticamSynchroniser(Kv::Ptr<SyncGroupData> group, bool followEdit)
    : VobSynchroniser(true), group_(std::move(group)), editFollowing_(followEdit) {
    setPriority(kClientPrioritySynchroniser);
    VobManager::instance().addStickyClient(this, VobManager::kViewRecord);
}

MulticamSynchroniser::~MulticamSynchroniser() {
    VobManager::instance().removeStickyClient(this);
    VobManager::instance().close(this, false); // while it still has its name
    deleteClients();
}

// --- preferences ---------------------------------------------------------------------------------

std::uint16_t MulticamSynchroniser::getMaxConcurrentPlayers() {
    return EditorPreferences::getPreference(kLimitKey, std::uint16_t{0});
}

void MulticamSynchroniser::setMaxConcurrentPlayers(std::uint16_t count) {
    EditorPreferences::setPreference(kLimitKey, count);
}

bool MulticamSynchroniser::getPreserveSequenceAudio() {
    return EditorPreferences::getPreference(kPreserveAudioKey, false);
}

void MulticamSynchroniser::setPreserveSequenceAudio(bool on) {
    EditorPreferences::setPreference(kPreserveAudioKey, on);
}

bool MulticamSynchroniser::getSharedMarkers() {
    return EditorPreferences::getPreference(kSharedMarkersKey, false);
}

void MulticamSynchroniser::setSharedMarkers(bool on) {
    EditorPreferences::setPreference(kSharedMarkersKey, on);
}

std::uint16_t MulticamSynchroniser::getConcurrentPlaybackLimit() const {
    return getMaxConcurrentPlayers();
}

// --- what is played ------------------------------------------------------------------------------

Kv::Ptr<Vob> MulticamSynchroniser::recordViewer() const {
    const Kv::Ptr<Vob> record = VobManager::instance().getRecordMachine();
    return findClient(record.get()) ? Kv::Ptr<Vob>() : record;
}

bool MulticamSynchroniser::isSequencePlayed() const {
    static const auto& sequencePlayback =
        *new cutroom::ConfigValue<int>("multicam_sequence_playback_sync", 1); // never destroyed
    return sequencePlayback.get() == 1 && editFollowing_ && recordViewer();
}

LightweightVector<Kv::Ptr<Vob>> MulticamSynchroniser::getSynchronisedVobs(unsigned which) {
    if ((which & kVobsToPlay) == 0)
        return VobSynchroniser::getSynchronisedVobs(which);
    LightweightVector<Kv::Ptr<Vob>> vobs;
    if (!getSyncEnabled()) {
        const Kv::Ptr<Vob> source = VobManager::instance().getSourceMachine();
        if (findClient(source.get()))
            vobs.push_back(source);
        return vobs;
    }
    if (!isSequencePlayed())
        return VobSynchroniser::getSynchronisedVobs(which);
    vobs = collectVobs(static_cast<std::uint16_t>(getConcurrentPlaybackLimit() - 1));
    vobs.push_back(recordViewer());
    return vobs;
}

// --- switching -----------------------------------------------------------------------------------

// Notes, for its own lifetime, that a switching is under way.
class MulticamSynchroniser::Switching {
public:
    explicit Switching(MulticamSynchroniser& whole) : alive_(whole.life()), whole_(whole) {
        ++whole.switchings_;
    }
    ~Switching() {
        if (alive_.alive())
            --whole_.switchings_;
    }
    Switching(const Switching&) = delete;
    Switching& operator=(const Switching&) = delete;

private:
    const cutroom::Lifeline::Watch alive_;
    MulticamSynchroniser& whole_;
};

void MulticamSynchroniser::setSyncEnabled(bool on) {
    assert(cutroom::isUiThread());
    if (switchings_ > 0 && on == getSyncEnabled())
        return;
    const cutroom::Lifeline::Watch watch(life());
    const Switching switching(*this);
    VobSynchroniser::setSyncEnabled(on);
    if (on)
        resync();
    if (!watch.alive())
        return;
    for (const Kv::Ptr<Vob>& vob : collectVobs(0)) {
        if (!watch.alive() || getSyncEnabled() != on)
            return; // a client that was moved or told has switched again
        vob->informClients(VobModification(on ? kVobSyncOn : kVobSyncOff));
    }
}

void MulticamSynchroniser::resync() {
    const cutroom::Lifeline::Watch watch(life());
    synchroniseSourceClips();
    if (watch.alive())
        persistClipSyncRelationships();
}

const VobSynchroniserBase::Client* MulticamSynchroniser::currentClip() const {
    const Client* clip = findClient(VobManager::instance().getSourceMachine().get());
    if (!clip)
        clip = findClient(lastMoved_);
    if (!clip && !clients().empty())
        clip = &clients().front();
    return clip;
}

void MulticamSynchroniser::synchroniseSourceClips() {
    const Client* const clip = currentClip();
    if (const Vob* const vob = clip ? clip->listener->getVob() : nullptr)
        handOn(*clip, vob->getCurrentTime());
}

void MulticamSynchroniser::persistClipSyncRelationships() {
    if (!group_)
        return;
    SyncGroupData::Relationships relationships;
    for (const Client& client : clients())
        if (const Vob* const vob = client.listener->getVob(); vob && vob->hasEdit())
            relationships.emplace_back(vob->getCookie(), offsetOf(vob));
    group_->storeRelationships(relationships);
}

unsigned MulticamSynchroniser::restoreClipSyncRelationships() {
    const SyncGroupData::Relationships stored =
        group_ ? group_->relationships() : SyncGroupData::Relationships();
    const auto find = [&](const Client& client) {
        const Vob* const vob = client.listener->getVob();
        return std::find_if(stored.begin(), stored.end(), [&](const auto& entry) {
            return vob && entry.first == vob->getCookie();
        });
    };
    const auto reference = clients().empty() ? stored.end() : find(clients().front());
    unsigned taken = 0;
    if (reference != stored.end())
        for (const Client& client : clients())
            if (const auto entry = find(client); entry != stored.end())
                taken += setOffset(client.listener->getVob(), entry->second - reference->second);
    return taken;
}

// --- what a clip tells ---------------------------------------------------------------------------

void MulticamSynchroniser::handleModifications(iVobListener* listener,
                                               const EditModifications& editChanges,
                                               const VobModification& change) {
    const cutroom::Lifeline::Watch watch(life());
    const Kv::Ptr<Vob> told = listener ? listener->getVob() : nullptr;
    VobSynchroniser::handleModifications(listener, editChanges, change);
    // A Vob that was moved along may have unlinked this one, or all.
    const auto goesOn = [&] { return watch.alive() && findClient(told.get()); };
    if (!goesOn() || (told->getTimeChangeFlags() & Vob::kTimeBySynchroniser) != 0)
        return;
    if (updateAllowed(told.get())) {
        if (change.includes(kVobTime))
            lastMoved_ = told.get();
        if (change.includesAnyOf(kVobTime | kVobMarks))
            keepPlaces(*told, change);
        if (goesOn() && editFollowing_ && change.includes(kVobTime))
            syncEditToClips();
    }
    if (goesOn())
        handleMarkerModifications(*told, editChanges);
}

void MulticamSynchroniser::keepPlaces(const Vob& told, const VobModification& change) {
    if (!group_)
        return;
    std::vector<SyncGroupData::ClipPlace> places;
    for (const Cookie& clip : group_->clips()) {
        const Client* const linked = clientOfClip(clip);
        const Kv::Ptr<Vob> vob = linked ? Kv::Ptr<Vob>(linked->listener->getVob())
                                        : VobManager::instance().getVobWithCookie(clip);
        if (vob && vob->hasEdit())
            places.push_back({clip, vob->getCurrentTime(),
                              vob->getEditModule().getMark(Kv::MarkTypes::In),
                              vob->getEditModule().getMark(Kv::MarkTypes::Out)});
    }
    const bool movedAlone = !getSyncEnabled() && change.includes(kVobTime) &&
                            (told.getTimeChangeFlags() & Vob::kTimeTransient) == 0;
    const Kv::Ptr<SyncGroupData> group = group_;
    group->takePlaces(places, movedAlone);
}
