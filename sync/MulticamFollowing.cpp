// The clips and the sequence that cuts between them follow each other; markers are shared.
#include "platform/store/Edit.h"
#include "sync/MulticamSynchroniser.h"
#include "vob/VobManager.h"

#include <cstdlib>
#include <map>
#include <set>
#include <tuple>
#include <utility>

using cutroom::ClipReference;
using cutroom::Flicks;

// Switches edit following off for its own lifetime.
class MulticamSynchroniser::FollowingOff {
public:
    explicit FollowingOff(MulticamSynchroniser& whole)
        : alive_(whole.life()), whole_(whole), before_(whole.editFollowing_) {
        whole.editFollowing_ = false;
    }
    ~FollowingOff() {
        if (alive_.alive())
            whole_.editFollowing_ = before_;
    }
    FollowingOff(const FollowingOff&) = delete;
    FollowingOff& operator=(const FollowingOff&) = delete;

private:
    const cutroom::Lifeline::Watch alive_;
    MulticamSynchroniser& whole_;
    const bool before_;
};

// A place on the sequence; the better one compares less.
struct MulticamSynchroniser::EditPosition {
    const ClipReference* reference = nullptr;
    Flicks time = 0;
    int rank = 0;        // 0: it shows the moment; 1: ends there; 2: shows another one
    Flicks distance = 0; // from where the sequence stands
    bool otherClip = false;

    bool shows() const noexcept { return reference && rank < 2; }
    bool betterThan(const EditPosition& other) const noexcept {
        return !other.reference || std::tie(rank, distance, otherClip) <
                                       std::tie(other.rank, other.distance, other.otherClip);
    }
};

// --- finding -------------------------------------------------------------------------------------

const VobSynchroniserBase::Client* MulticamSynchroniser::clientOfClip(const Cookie& clip) const {
    for (const Client& client : clients())
        if (const Vob* const vob = client.listener->getVob();
            vob && vob->hasEdit() && vob->getCookie() == clip)
            return &client;
    return nullptr;
}

const std::vector<ClipReference>& MulticamSynchroniser::references() {
    std::vector<EditPtr> clips;
    for (const Kv::Ptr<Vob>& vob : collectVobs(0))
        if (vob->hasEdit())
            clips.push_back(vob->getEdit());
    map_.update(getEdit(), clips);
    return map_.references();
}

bool MulticamSynchroniser::isFirstOnItsClip(const Vob& vob) const {
    const Client* const client = clientOfClip(vob.getCookie());
    return client && client->listener->getVob() == &vob;
}

MulticamSynchroniser::EditPosition MulticamSynchroniser::findPosition() {
    EditPosition best;
    const Client* const current = currentClip();
    const Vob* const clip = current ? current->listener->getVob() : nullptr;
    const Vob* const sequence = getVob();
    if (!clip || !sequence || !cutroom::isStorableTime(clip->getCurrentTime()) ||
        !cutroom::isStorableTime(sequence->getCurrentTime()))
        return best;
    const double moment = clip->getCurrentTime() - current->offset;
    const Flicks at = cutroom::toFlicks(sequence->getCurrentTime());
    const Client* client = nullptr;
    for (const ClipReference& reference : references()) {
        if (!client || client->listener->getCookie() != reference.clip)
            client = clientOfClip(reference.clip);
        if (!client || !cutroom::isStorableTime(moment + client->offset))
            continue;
        const auto shown = reference.editTimeOf(cutroom::toFlicks(moment + client->offset), at);
        EditPosition position{&reference,
                              shown.value_or(std::clamp(at, reference.start, reference.end))};
        position.rank = !shown ? 2 : *shown == reference.end ? 1 : 0;
        position.distance = std::abs(position.time - at);
        position.otherClip = client != current;
        if (position.betterThan(best))
            best = position;
    }
    return best;
}

ClipReference MulticamSynchroniser::findClipReference() {
    const EditPosition position = findPosition();
    return position.reference ? *position.reference : ClipReference();
}

double MulticamSynchroniser::findSyncPosForEdit() {
    const EditPosition position = findPosition();
    return position.shows() ? cutroom::toSeconds(position.time) : kNoTime;
}

bool MulticamSynchroniser::canSyncWithEdit() {
    return editFollowing_ && getEdit() && findClipReference().valid();
}

// --- following -----------------------------------------------------------------------------------

void MulticamSynchroniser::setCurrentTimeUnsynced(const Kv::Ptr<Vob>& vob, double seconds) {
    const Kv::Ptr<Vob> moved = vob;
    if (!moved || moved->getCurrentTime() == seconds)
        return;
    const FollowingOff off(*this);
    moved->setCurrentTime(seconds);
}

void MulticamSynchroniser::syncEditToClips() {
    const Kv::Ptr<Vob> record = recordViewer();
    const double position = record ? findSyncPosForEdit() : kNoTime;
    if (position != kNoTime)
        setCurrentTimeUnsynced(record, position);
}

void MulticamSynchroniser::syncClipsToEdit() {
    const Vob* const sequence = getVob();
    if (!sequence || findClient(sequence) || !cutroom::isStorableTime(sequence->getCurrentTime()))
        return;
    const Flicks at = cutroom::toFlicks(sequence->getCurrentTime());
    const ClipReference* shown = nullptr;
    for (const ClipReference& reference : references())
        if (reference.touches(at) && (!shown || (shown->end == at && reference.end != at)))
            shown = &reference;
    const Client* const client = shown ? clientOfClip(shown->clip) : nullptr;
    if (client)
        setCurrentTimeUnsynced(client->listener->getVob(),
                               cutroom::toSeconds(shown->clipTimeAt(at)));
}

void MulticamSynchroniser::handleModifications(const EditModifications&,
                                               const VobModification& change) {
    const Vob* const sequence = getVob();
    if (!editFollowing_ || !sequence || !change.includes(kVobTime) ||
        (sequence->getTimeChangeFlags() & Vob::kTimeBySynchroniser) != 0 ||
        !updateAllowed(sequence))
        return;
    const Client* const clip = currentClip();
    const Vob* const vob = clip ? clip->listener->getVob() : nullptr;
    if (vob && !(sequence->isPlaying() && vob->isPlaying()))
        syncClipsToEdit();
}

// --- shared markers ------------------------------------------------------------------------------

namespace {

// Repeats one change of a cue on another clip, whose time is `later` than that of the first.
void repeatCue(const EditPtr& from, const EditPtr& to, const EditModification& change,
               double later) {
    const LightweightString<char> origin = MulticamSynchroniser::kName;
    if (change.detail == kCueRemoved) {
        to->removeCue(change.cue, origin);
        return;
    }
    const CueList cues = from->getCues();
    const std::size_t index = cues.find(change.cue);
    if (index >= cues.getNumCuePoints())
        return; // it was removed since
    Cue cue = cues.getCuePoint(index);
    cue.slide(later);
    if (!to->isValidChan(cue.getChannel()))
        cue.setChannel(IdStamp());
    if (to->getCues().find(cue.getExtID()) < to->getCues().getNumCuePoints())
        to->changeCue(cue, origin);
    else
        to->addCue(cue, origin);
}

} // namespace

iVobSynchroniser::iVobListener* MulticamSynchroniser::makeListener(const Kv::Ptr<Vob>& vob) {
    if (vob->hasEdit())
        knownCues_[vob->getCookie()] = vob->getEdit()->getCues();
    return VobSynchroniser::makeListener(vob);
}

// The changes of single cues. Undo, and setting the list as a whole, do not say which cues they
// change; those are found by comparing with the cues known before.
std::vector<EditModification>
MulticamSynchroniser::takeCueChanges(const EditPtr& clip, const EditModifications& editChanges) {
    std::vector<EditModification> changes;
    std::set<IdStamp> named;
    for (const EditModification& change : editChanges.details()) {
        if (change.kind != kModCues)
            continue;
        named.insert(change.cue);
        if (change.origin != kName)
            changes.push_back(change);
    }
    const CueList now = clip->getCues();
    CueList& known = knownCues_.try_emplace(clip.getCookie(), now).first->second;
    const auto add = [&](const IdStamp& cue, eCueChange what) {
        if (!named.insert(cue).second)
            return;
        changes.emplace_back(kModCues, what).cue = cue;
    };
    std::map<IdStamp, const Cue*> before;
    for (const Cue& cue : known.cues())
        before.emplace(cue.getExtID(), &cue);
    for (const Cue& cue : now.cues()) {
        const auto old = before.find(cue.getExtID());
        if (old == before.end())
            add(cue.getExtID(), kCueAdded);
        else if (*old->second != cue)
            add(cue.getExtID(), kCueChanged);
        if (old != before.end())
            before.erase(old);
    }
    for (const auto& [cue, gone] : before)
        add(cue, kCueRemoved);
    known = now;
    return changes;
}

// When several Vobs show the same edit, only the first linked one hands its markers on.
void MulticamSynchroniser::handleMarkerModifications(const Vob& told,
                                                     const EditModifications& editChanges) {
    if (!(editChanges.includes(kModCues) || editChanges.contentReplaced()) ||
        !isFirstOnItsClip(told))
        return;
    const EditPtr from = told.getEdit();
    const double time = told.getCurrentTime();
    const std::vector<EditModification> changes = takeCueChanges(from, editChanges);
    if (changes.empty() || !getSharedMarkers())
        return;
    LightweightVector<Kv::Ptr<Vob>> others = collectVobs(0);
    std::erase_if(others,
                  [&](const Kv::Ptr<Vob>& vob) { return vob == &told || !isFirstOnItsClip(*vob); });
    for (const Kv::Ptr<Vob>& vob : others) {
        const double later = vob->getCurrentTime() - time;
        for (const EditModification& change : changes)
            if (!vob->isReadOnly())
                repeatCue(from, vob->getEdit(), change, later);
    }
}
