// Verbs for batches, threads and the history.
#include "cli/History.h"
#include "cli/Permission.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/EditManager.h"

#include <thread>

namespace cutroom::cli {

namespace {

VobModification takeKinds(Session& session, SessionWords& words) {
    VobModification change(static_cast<unsigned>(words.takeInt("kinds", 0, 0xFFFFFFFF)));
    if (change.includes(kVobTime))
        change.setTime(session.viewer()->getCurrentTime());
    if (words.takeIf("mark"))
        change.setMarkTime(session.takePlace(words));
    while (!words.done())
        change.addModifiedTrack(session.takeChannel(words));
    return change;
}

// Tells from another thread; what it posts is delivered when the line ends.
void elsewhere(Session& session, SessionWords& words) {
    const Kv::Ptr<Vob> vob = session.viewer();
    const VobModification change = takeKinds(session, words);
    std::thread([&] { vob->addModification(change); }).join();
}

void describe(Session& session, SessionWords& words) {
    const auto kind = static_cast<EditModificationType>(words.takeInt("an edit kind", 0, 63));
    const VobModification change = takeKinds(session, words);
    session.viewer()->setChangeDescription(EditModifications(kind), change);
}

// Steps that the library adds by itself have no description.
std::string nameOf(const std::string& description) {
    return description.empty() ? "(a step)" : description;
}

void history(Session& session, SessionWords&) {
    for (const auto& step : EditManager::instance().getHistory(session.edit()))
        session.say("  " + nameOf(step.description) + (step.undone ? " (undone)" : ""));
}

void step(Session& session, bool back) {
    require(mayChange(session.edit()));
    const auto taken = nextStep(session.edit(), back);
    if (!taken)
        refuse(StatusCode::failed, back ? "undo" : "redo", "there is no step to take");
    if (back)
        session.viewer()->undoRequest();
    else
        session.viewer()->redoRequest();
    session.say((back ? "undone: " : "redone: ") + nameOf(taken->description));
}

} // namespace

void addBatchVerbs(VerbTable& verbs) {
    verbs.heading("Batches and history");
    verbs.add({"begin", "", "opens a batch: changes are told when it ends",
               [](Session& session, SessionWords&) { session.viewer()->beginModifications(); }});
    verbs.add({"end", "", "ends a batch; one end too many holds all later changes",
               [](Session& session, SessionWords&) { session.viewer()->endModifications(); }});
    verbs.add({"forget", "", "drops what is pending in the batch",
               [](Session& session, SessionWords&) { session.viewer()->clearModifications(); }});
    verbs.add({"tell", "KINDS [mark T] [CHANNEL ...]", "records a change of these kinds (bits)",
               [](Session& session, SessionWords& words) {
                   session.viewer()->addModification(takeKinds(session, words));
               }});
    verbs.add({"tell-elsewhere", "KINDS [mark T] [CHANNEL ...]", "the same from another thread",
               elsewhere});
    verbs.add({"describe", "EDIT-KIND KINDS [mark T] [CHANNEL ...]",
               "what the viewer reports when the edit's change arrives", describe});
    verbs.add({"backup", "", "puts a step into the edit's history",
               [](Session& session, SessionWords&) { session.viewer()->makeBackup(); }});
    verbs.add({"undo", "", "goes a step back",
               [](Session& session, SessionWords&) { step(session, kBack); }});
    verbs.add({"redo", "", "goes a step forward again",
               [](Session& session, SessionWords&) { step(session, kForth); }});
    verbs.add({"history", "", "lists the edit's steps", history});
    verbs.add({"store-view", "", "keeps time, marks, selection and region with the edit",
               [](Session& session, SessionWords&) { session.viewer()->storeBackupDetails(); }});
    verbs.add({"restore-view", "", "takes them back from the edit",
               [](Session& session, SessionWords&) { session.viewer()->restoreBackupDetails(); }});
}

} // namespace cutroom::cli
