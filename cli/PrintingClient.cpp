#include "cli/PrintingClient.h"

#include "cli/MixWords.h"
#include "platform/base/Strings.h"
#include "platform/base/Time.h"
#include "platform/store/Edit.h"
#include "vob/Vob.h"

#include <array>

namespace cutroom::cli {

namespace {

struct KindWord {
    unsigned bit;
    const char* word;
};

constexpr std::array kVobWords{
    KindWord{kVobTime, "time"},
    KindWord{kVobMarks, "marks"},
    KindWord{kVobCuts, "cuts"},
    KindWord{kVobSelection, "selection"},
    KindWord{kVobEditReplaced, "edit-replaced"},
    KindWord{kVobViewEdits, "view-edits"},
    KindWord{kVobStills, "stills"},
    KindWord{kVobBecameSource, "became-source"},
    KindWord{kVobBecameRecord, "became-record"},
    KindWord{kVobBecamePlay, "became-play"},
    KindWord{kVobLostSource, "lost-source"},
    KindWord{kVobLostRecord, "lost-record"},
    KindWord{kVobLostPlay, "lost-play"},
    KindWord{kVobImpendingRevision, "impending-revision"},
    KindWord{kVobViewRegion, "region"},
    KindWord{kVobLevelNodes, "level-nodes"},
    KindWord{kVobSegments, "segments"},
    KindWord{kVobSyncOff, "sync-off"},
    KindWord{kVobSyncOn, "sync-on"},
    KindWord{kVobCueFilter, "cue-filter"},
};

constexpr std::array kEditWords{
    KindWord{kModEventsAdded, "cuts added"},
    KindWord{kModEventsRemoved, "cuts removed"},
    KindWord{kModName, "name"},
    KindWord{kModCues, "cues"},
    KindWord{kModGroups, "groups"},
    KindWord{kModLevelNodes, "level nodes"},
    KindWord{kModEventsTrimmed, "cuts moved"},
    KindWord{kModChannelsAdded, "channels added"},
    KindWord{kModChannelsRemoved, "channels removed"},
    KindWord{kModDeleted, "deleted"},
    KindWord{kModRestored, "restored"},
    KindWord{kModFlattened, "flattened"},
    KindWord{kModTrimFinished, "trim finished"},
    KindWord{kModGeneral, "general"},
    KindWord{kModConfiguration, "configuration"},
    KindWord{kModLogType, "log type"},
    KindWord{kModOriginalMaterial, "original material"},
    KindWord{kModLabels, "labels"},
    KindWord{kModBurntIn, "burnt-in timecode"},
    KindWord{kModReadOnly, "read-only"},
    KindWord{kModStartTime, "start"},
    KindWord{kModLength, "length"},
    KindWord{kModMedia, "media"},
    KindWord{kModSubtitles, "subtitles"},
    KindWord{kModChannelNames, "channel names"},
    KindWord{kModMetadata, "metadata"},
    KindWord{kModAudioMix, "mix"},
    KindWord{kModEffects, "effects"},
    KindWord{kModImported, "imported"},
    KindWord{kModSyncErrors, "sync errors"},
    KindWord{kModStripInfo, "strips"},
};

std::string tracksText(const VobModification& change, const EditPtr& edit) {
    std::string text;
    for (const IdStamp& track : change.getModifiedTracks()) {
        const bool known = edit && edit->isValidChan(track);
        text += (text.empty() ? "" : ",") +
                (known ? toUtf8(edit->getChanDisplayName(track)) : track.asString());
    }
    return text;
}

// One text for each setting of the mix that is named.
void addMixChanges(std::vector<std::string>& texts, const EditModifications& changes,
                   const EditPtr& edit) {
    for (const EditModification& one : changes.details())
        if (one.kind == kModAudioMix)
            texts.push_back("mix " + mixChangeText(one, edit));
}

const char* nameOf(const VobClient* client) { return client ? client->idstring() : "nobody"; }

} // namespace

std::string kindsText(unsigned type) {
    std::string text;
    for (const KindWord& kind : kVobWords)
        if (type & kind.bit)
            text += (text.empty() ? "" : "+") + std::string(kind.word);
    return text.empty() ? "nothing" : text;
}

std::string kindsText(const EditModifications& changes, const EditPtr& edit) {
    std::vector<std::string> texts;
    for (const KindWord& kind : kEditWords) {
        if (!changes.includes(static_cast<EditModificationType>(kind.bit)))
            continue;
        const std::size_t before = texts.size();
        if (kind.bit == kModAudioMix)
            addMixChanges(texts, changes, edit);
        if (texts.size() == before)
            texts.emplace_back(kind.word);
    }
    return join(texts, ", ");
}

std::string timeText(double seconds) {
    if (seconds == kNoTime)
        return "none";
    std::string text = format("%.6f", seconds);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text == "-0" ? "0" : text;
}

PrintingClient::PrintingClient(std::string name, eClientPriority priority,
                               eClientManagementDetails details, Printer printer)
    : name_(std::move(name)), printer_(std::move(printer)) {
    setPriority(priority);
    setManagementDetails(details);
}

PrintingClient::PrintingClient(std::string name, const Cookie& edit, eClientPriority priority,
                               eClientManagementDetails details, Printer printer)
    : VobClient(edit, nullptr, priority, details), name_(std::move(name)),
      printer_(std::move(printer)) {}

PrintingClient::~PrintingClient() = default;

void PrintingClient::forget(const VobClient* client) { std::erase(managed_, client); }

void PrintingClient::handleModifications(const EditModifications& editChanges,
                                         const VobModification& change) {
    std::string what = change.valid() || editChanges.empty() ? kindsText(change.getType()) : "";
    if (change.includes(kVobTime))
        what += " at " + timeText(change.getTime());
    if (change.getMarkTime() != kNoTime)
        what += " mark " + timeText(change.getMarkTime());
    if (!change.getModifiedTracks().empty())
        what += " tracks " + tracksText(change, getEdit());
    if (!editChanges.empty())
        what += (what.empty() ? "(edit: " : " (edit: ") + kindsText(editChanges, getEdit()) + ")";
    say(what);
    if (auto reaction = std::exchange(reaction_, nullptr))
        reaction();
}

void PrintingClient::notifyClientAdded(VobClient* client) {
    say(std::string("joined by ") + nameOf(client));
}

void PrintingClient::notifyClientRemoved(VobClient* client) {
    say(std::string("left by ") + nameOf(client));
}

void PrintingClient::notifyPlayStateChange(PlayStateNotifyType change) {
    say(change == kPlayStateStarted   ? "playing"
        : change == kPlayStateStopped ? "stopped"
                                      : "speed changed");
}

void PrintingClient::notifyOtherEditAltered(const Cookie& edit, const EditModifications& changes) {
    const EditPtr other = changes.includes(kModDeleted) ? EditPtr() : EditPtr(edit);
    say("other edit " + (other ? '"' + toUtf8(other->getName()) + '"' : std::string("gone")) +
        ": " + kindsText(changes, other));
}

void PrintingClient::handleConsoleFocus(bool hasFocus) {
    say(hasFocus ? "has the console focus" : "lost the console focus");
}

void PrintingClient::handleMessage(const LightweightString<char>& message) {
    say("message " + message);
}

} // namespace cutroom::cli
