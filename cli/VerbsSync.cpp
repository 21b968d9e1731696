// Verbs that link viewers, and for multicam.
#include "cli/Assets.h"
#include "cli/Names.h"
#include "cli/Session.h"
#include "cli/SessionLinks.h"
#include "editops/SyncUpLabels.h"
#include "editops/SyncUpParams.h"
#include "platform/base/Strings.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <cmath>

namespace cutroom::cli {

namespace {

using VobList = LightweightVector<Kv::Ptr<Vob>>;

std::string names(const Session& session, const VobList& vobs) {
    std::string text;
    for (const Kv::Ptr<Vob>& vob : vobs)
        text += (text.empty() ? "" : ", ") + session.nameOf(vob.get());
    return text.empty() ? "nobody" : text;
}

Kv::Ptr<Vob> takeViewer(const Session& session, SessionWords& words) {
    return session.viewerNamed(words.take("a viewer"));
}

// --- linking -------------------------------------------------------------------------------------

void link(Session& session, SessionWords& words) {
    VobList vobs;
    std::string name = "links";
    while (!words.done())
        if (words.takeIf("as"))
            name = words.take("a name");
        else
            vobs.push_back(takeViewer(session, words));
    const std::string before = session.links().currentName();
    VobSynchroniser* synchroniser = session.links().find(name);
    if (!synchroniser)
        synchroniser = &session.links().add(name, std::make_unique<VobSynchroniser>());
    session.links().use(name);
    synchroniser->setItemsToSync(vobs);
    const VobList linked = synchroniser->getSynchronisedVobs(0);
    if (linked.empty() && !vobs.empty()) {
        session.links().endCurrent();
        if (session.links().find(before))
            session.links().use(before);
        refuse(StatusCode::failed, name,
               "other links hold these viewers; `link-too` links one a second time");
    }
    session.say("  " + name + ": " + names(session, linked));
}

void unlink(Session& session, SessionWords& words) {
    if (words.done()) {
        session.links().endCurrent();
        return;
    }
    VobSynchroniser& synchroniser = session.links().current();
    VobList vobs = synchroniser.getSynchronisedVobs(0);
    while (!words.done())
        std::erase(vobs, takeViewer(session, words));
    synchroniser.setItemsToSync(vobs);
}

void tellLinks(Session& session, SessionWords&) {
    for (const auto& [name, synchroniser] : session.links().all()) {
        const auto* const multicam = dynamic_cast<const MulticamSynchroniser*>(synchroniser.get());
        session.say(std::string(name == session.links().currentName() ? "* " : "  ") + name +
                    (multicam ? ", multicam" : "") +
                    (synchroniser->getSyncEnabled() ? ", on" : ", off") +
                    (multicam && multicam->getEditFollowing() ? ", follows the edit" : "") +
                    format(", caps %u", synchroniser->getCaps()));
        for (const Kv::Ptr<Vob>& vob : synchroniser->getSynchronisedVobs(0))
            session.say("    " + session.nameOf(vob.get()) + " at " +
                        timeText(vob->getCurrentTime()) + ", offset " +
                        timeText(synchroniser->offsetOf(vob.get())));
    }
}

void tellLinked(Session& session, SessionWords& words) {
    const Kv::Ptr<Vob> vob = takeViewer(session, words);
    const VobSynchroniser& synchroniser = session.links().current();
    session.say(std::string(VobSynchroniser::isSynced(vob.get()) ? "  linked" : "  not linked") +
                (synchroniser.findClient(vob.get()) ? " here" : "") + ", stands " +
                timeText(synchroniser.calculateOffsetFor(vob.get())) + " later, its moves are " +
                (VobSynchroniserBase::updateAllowed(vob.get()) ? "handed on" : "its own"));
}

// The label, as sync-up takes it, that tells which timecode stands at a shot's time 0.
LabelledShot timecodeAtStart(const Session& session, const Vob& vob) {
    const EditPtr edit = vob.getEdit();
    const bool picture = !edit->getChans(kChanVideo).empty();
    const synchup_params rules;
    LabelledShot shot = readLabelled(edit.getCookie(), picture ? kChanVideo : kChanAudio,
                                     picture ? rules.pictureLabel : rules.soundLabel, 0);
    if (shot.label == kNoTime)
        refuse(StatusCode::failed, session.nameOf(&vob), "has no timecode");
    return shot;
}

// Seconds after which the timecode of a shot begins again: not 86400 where 24 hours of labels take
// longer than a day, as without drop frame at 29.97.
double labelDay(const LabelledShot& shot) {
    const TimecodeFormat& format = shot.labelFormat;
    return toSeconds(format.rate.frameToFlicks(framesPerDay(format)));
}

// How much later than the second the first began, within half a day of labels either way: of two
// that are further apart the one with the earlier timecode began after midnight.
double beganLater(const LabelledShot& first, const LabelledShot& second) {
    const double later = first.label - second.label;
    return std::remainder(later, labelDay(later > 0 ? second : first));
}

// Takes the same timecode as one moment: who began later stands earlier.
unsigned takeOffsetsFromTimecode(const Session& session, VobSynchroniser& synchroniser) {
    const VobList vobs = synchroniser.getSynchronisedVobs(0);
    std::vector<LabelledShot> shots;
    for (const Kv::Ptr<Vob>& vob : vobs)
        shots.push_back(timecodeAtStart(session, *vob));
    unsigned taken = 0;
    for (std::size_t i = 0; i < vobs.size(); ++i) // the first one is what the others stand to
        taken += synchroniser.setOffset(vobs[i].get(), beganLater(shots.front(), shots[i])) ? 1 : 0;
    return taken;
}

void offset(Session& session, SessionWords& words) {
    VobSynchroniser& synchroniser = session.links().current();
    if (words.left() == 1) {
        const auto& from = words.takeOneOf("where from", {"marks", "stored", "timecode"});
        const unsigned taken = from == "marks" ? synchroniser.takeOffsetsFromMarks()
                               : from == "stored"
                                   ? session.links().multicam().restoreClipSyncRelationships()
                                   : takeOffsetsFromTimecode(session, synchroniser);
        session.say(format("  %u taken", taken));
        return;
    }
    const std::string viewer = words.peek();
    const Kv::Ptr<Vob> vob = takeViewer(session, words);
    if (!synchroniser.setOffset(vob.get(), words.takeNumber("seconds")))
        refuse(StatusCode::failed, viewer, "the first linked viewer, or not linked here");
}

void passOn(Session& session, SessionWords& words) {
    const std::string viewer = words.peek();
    const Kv::Ptr<Vob> vob = takeViewer(session, words);
    VobSynchroniser& synchroniser = session.links().current();
    const auto* const client = synchroniser.findClient(vob.get());
    if (!client)
        refuse(StatusCode::failed, viewer, "not linked here");
    synchroniser.informTimeChanged(*client, session.takePlaceOf(*vob, words));
}

// --- playing -------------------------------------------------------------------------------------

VobList players(Session& session) {
    return session.links().current().getSynchronisedVobs(iVobSynchroniser::kVobsToPlay);
}

void playLinked(Session& session, SessionWords& words) {
    const double speed = words.done() ? 1.0 : words.takeNumber("a speed");
    const VobList playing = players(session);
    for (const Kv::Ptr<Vob>& vob : VobManager::instance().getAllVobs())
        vob->registerWithPlayServer(false);
    for (const Kv::Ptr<Vob>& vob : playing)
        vob->registerWithPlayServer(true);
    if (!session.host().transport().play(speed))
        refuse(StatusCode::failed, "play-linked", "nothing can be played at this speed");
}

// --- multicam ------------------------------------------------------------------------------------

void makeSyncGroup(Session& session, SessionWords& words) {
    const std::wstring name = require(parseName(words.take("a name")));
    const CookieVec clips = require(findAssets(words.takeRest(), kEdits));
    const Kv::Ptr<SyncGroupData> group = SyncGroupData::make(name);
    group->add(clips);
    session.say(format("  %u clip%s", group->numItems(), group->numItems() == 1 ? "" : "s"));
}

// A viewer of the clip: the one that is open, else a new one that stands where the group says.
Kv::Ptr<Vob> viewerOfClip(Session& session, const BinItem& item) {
    for (const auto& [name, vob] : session.viewers())
        if (vob->getCookie() == item.asset)
            return vob;
    const EditPtr clip(item.asset);
    if (!clip)
        return {};
    const Kv::Ptr<Vob> vob = VobManager::instance().createVob(clip);
    vob->setCurrentTime(item.time);
    vob->storeMarkTime(IdStamp(), item.markIn, Kv::MarkTypes::In);
    vob->storeMarkTime(IdStamp(), item.markOut, Kv::MarkTypes::Out);
    const std::string before = session.viewerName();
    session.addViewer(session.freeName(toUtf8(clip->getName())), vob);
    if (!before.empty())
        session.useViewer(before);
    return vob;
}

// The one of that name, if it is of the group; else a new one in place of whatever has the name.
MulticamSynchroniser& multicamNamed(Session& session, const std::string& name,
                                    const Kv::Ptr<SyncGroupData>& group) {
    SessionLinks& links = session.links();
    if (links.find(name)) {
        links.use(name);
        auto* const same = dynamic_cast<MulticamSynchroniser*>(&links.current());
        if (same && same->group() == group)
            return *same;
        links.endCurrent();
        session.dropClosedViewers(); // those that had no other client
    }
    return dynamic_cast<MulticamSynchroniser&>(
        links.add(name, std::make_unique<MulticamSynchroniser>(group, false)));
}

void multicam(Session& session, SessionWords& words) {
    const std::string text = words.take("a sync group");
    const auto bin = findAsset(text, kBins);
    if (!bin && bin.status().message().starts_with("no bin has"))
        refuse(StatusCode::notFound, text,
               "no sync group has this name or cookie; `sync-group` makes one");
    const Kv::Ptr<SyncGroupData> group = SyncGroupData::open(require(bin).cookie);
    if (!group)
        refuse(StatusCode::wrongUsage, text, "a bin, not a sync group");
    bool follow = false;
    std::string name = "multicam";
    while (!words.done())
        if (words.takeOneOf("a word", {"follow", "as"}) == "follow")
            follow = true;
        else
            name = words.take("a name");
    MulticamSynchroniser& synchroniser = multicamNamed(session, name, group);
    synchroniser.setEditFollowing(follow);
    VobList vobs;
    for (unsigned i = 0; i < group->numItems(); ++i)
        vobs.push_back(viewerOfClip(session, group->getItem(i)));
    synchroniser.setItemsToSync(vobs);
    const unsigned stored = synchroniser.restoreClipSyncRelationships();
    session.say("  " + name + ": " + names(session, synchroniser.getSynchronisedVobs(0)) +
                format("; %u as stored", stored));
}

void tellSyncPosition(Session& session, SessionWords&) {
    MulticamSynchroniser& multicam = session.links().multicam();
    const ClipReference reference = multicam.findClipReference();
    session.say("  position " + timeText(multicam.findSyncPosForEdit()) + ", " +
                (multicam.canSyncWithEdit() ? "can follow" : "cannot follow"));
    if (reference.valid())
        session.say("  " + assetName(reference.clip) + " from " +
                    timeText(toSeconds(reference.clipStart)) + ", seen from " +
                    timeText(toSeconds(reference.start)) + " to " +
                    timeText(toSeconds(reference.end)));
}

void timeAlone(Session& session, SessionWords& words) {
    const Kv::Ptr<Vob> vob = takeViewer(session, words);
    const double seconds = session.takePlaceOf(*vob, words);
    session.links().multicam().setCurrentTimeUnsynced(vob, seconds);
}

void preferences(Session& session, SessionWords& words) {
    if (words.takeIf("limit"))
        MulticamSynchroniser::setMaxConcurrentPlayers(
            static_cast<std::uint16_t>(words.takeInt("a number", 0, 65535)));
    else if (words.takeIf("markers"))
        MulticamSynchroniser::setSharedMarkers(words.takeOnOff("on or off"));
    else if (words.takeIf("audio"))
        MulticamSynchroniser::setPreserveSequenceAudio(words.takeOnOff("on or off"));
    const unsigned limit = MulticamSynchroniser::getMaxConcurrentPlayers();
    session.say(
        (limit ? format("  at most %u clips played at once, ", limit)
               : std::string("  all clips played at once, ")) +
        (MulticamSynchroniser::getSharedMarkers() ? "shared markers" : "own markers") +
        (MulticamSynchroniser::getPreserveSequenceAudio() ? ", the sequence's audio stays" : ""));
}

// A verb without words that runs one operation of the current multicam.
void addOperation(VerbTable& verbs, const char* name, const char* about,
                  void (MulticamSynchroniser::*operation)()) {
    verbs.add({name, "", about, [operation](Session& session, SessionWords&) {
                   (session.links().multicam().*operation)();
               }});
}

void addMulticamVerbs(VerbTable& verbs) {
    verbs.heading("Multicam");
    verbs.add(
        {"sync-group", "NAME CLIP ...", "makes a sync group of edits or logs", makeSyncGroup});
    verbs.add({"multicam", "GROUP [follow] [as NAME]",
               "links viewers of a group's clips, opened where need be; follow: with the record "
               "viewer",
               multicam});
    verbs.add({"follow-edit", "on|off", "whether the record viewer and the clips follow each other",
               [](Session& session, SessionWords& words) {
                   session.links().multicam().setEditFollowing(words.takeOnOff("on or off"));
               }});
    addOperation(verbs, "resync", "brings the clips into line and stores how they lie",
                 &MulticamSynchroniser::resync);
    addOperation(verbs, "line-up", "brings the clips into line",
                 &MulticamSynchroniser::synchroniseSourceClips);
    addOperation(verbs, "keep-relations", "stores how the clips lie to each other",
                 &MulticamSynchroniser::persistClipSyncRelationships);
    verbs.add({"sync-position?", "", "tells where the record viewer's edit shows this moment",
               tellSyncPosition});
    addOperation(verbs, "edit-to-clips", "moves the record viewer to what the clips show",
                 &MulticamSynchroniser::syncEditToClips);
    addOperation(verbs, "clips-to-edit", "moves the clips to what the record viewer shows",
                 &MulticamSynchroniser::syncClipsToEdit);
    verbs.add({"time-alone", "VIEWER T", "moves a viewer without the edit following", timeAlone});
    verbs.add({"multicam-preferences", "[limit N | markers on|off | audio on|off]",
               "tells or sets what holds for all multicams", preferences});
}

} // namespace

void addSyncVerbs(VerbTable& verbs) {
    verbs.heading("Following");
    verbs.add({"link", "VIEWER ... [as NAME]",
               "links exactly these viewers: their times follow one another", link});
    verbs.add(
        {"unlink", "[VIEWER ...]", "takes viewers out of the links, or ends the links", unlink});
    verbs.add(
        {"use-links", "NAME", "makes links the ones to act on",
         [](Session& session, SessionWords& words) { session.links().use(words.take("links")); }});
    verbs.add({"links?", "", "lists all links with times and offsets", tellLinks});
    verbs.add({"linked?", "VIEWER", "tells whether and how a viewer is linked", tellLinked});
    verbs.add({"link-too", "VIEWER", "links one more, even one that other links hold",
               [](Session& session, SessionWords& words) {
                   session.links().current().createClient(takeViewer(session, words));
               }});
    verbs.add({"drop-links", "", "unlinks all and keeps the links' name",
               [](Session& session, SessionWords&) { session.links().current().deleteClients(); }});
    verbs.add({"synchronise", "on|off", "whether moves are handed on",
               [](Session& session, SessionWords& words) {
                   session.links().current().setSyncEnabled(words.takeOnOff("on or off"));
               }});
    verbs.add({"offset", "VIEWER SECONDS | marks|stored|timecode",
               "how much later than the first a linked viewer shall stand", offset});
    verbs.add(
        {"pass-on", "VIEWER T", "moves the others as if a linked viewer stood there", passOn});
    verbs.add({"players?", "", "tells which linked viewers are played",
               [](Session& session, SessionWords&) {
                   session.say("  " + names(session, players(session)));
               }});
    verbs.add({"play-linked", "[SPEED]", "plays these, and nothing else", playLinked});
    addMulticamVerbs(verbs);
}

} // namespace cutroom::cli
