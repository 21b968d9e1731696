// Verbs that open, arrange and close viewers.
#include "cli/EditView.h"
#include "cli/Names.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

namespace cutroom::cli {

namespace {

// A picture for every place of the edit: what a session needs of a stills provider.
class SessionStills final : public iStillsProvider {
public:
    LightweightString<wchar_t> getStill(double) const override { return {}; }
};

EditPtr takeEdit(SessionWords& words) {
    const std::string& word = words.take("an edit");
    if (word == "clipboard")
        return EditManager::instance().getClipboard();
    return require(openEdit(word));
}

// The names "source" and "record" stand for the roles: a viewer that takes one gets the role.
void giveNamedRole(const std::string& name, const Kv::Ptr<Vob>& vob) {
    VobManager& manager = VobManager::instance();
    if (name == "source")
        manager.setSourceMachine(vob.get(), VobManager::kTellOld | VobManager::kTellNew);
    else if (name == "record")
        manager.setRecordMachine(vob.get(), VobManager::kTellOld | VobManager::kTellNew);
}

void openViewer(Session& session, SessionWords& words) {
    const EditPtr edit = words.takeIf("new") ? EditPtr() : takeEdit(words);
    const std::string name = session.takeViewerName(words);
    const Kv::Ptr<Vob> vob = VobManager::instance().createVob(edit);
    session.addViewer(name, vob);
    session.say(name + ": " + toUtf8(vob->getEdit()->getName()) + ", " +
                timeText(vob->getTotalDuration()) + " s");
    giveNamedRole(name, vob);
}

void again(Session& session, SessionWords& words) {
    const bool freshFirst = words.takeIf("fresh");
    const std::string name = session.takeViewerName(words);
    const bool sameModule = !words.takeIf("fresh") && !freshFirst;
    const Kv::Ptr<Vob> from = session.viewer();
    VobManager& manager = VobManager::instance();
    const Kv::Ptr<Vob> vob = sameModule
                                 ? manager.createVob(from->getEditModule(), from->getGroupId())
                                 : manager.createVob(from->getCookie());
    session.addViewer(name, vob);
}

void closeViewer(Session& session, SessionWords& words) {
    std::string name = session.viewerName();
    bool force = false;
    while (!words.done())
        if (words.takeIf("force"))
            force = true;
        else
            name = words.take("a viewer");
    if (!VobManager::instance().closeVob(session.viewerNamed(name), force))
        refuse(StatusCode::failed, name, "clients are attached to it; drop them or say `force`");
    session.removeViewer(name);
}

void listViewers(Session& session, SessionWords&) {
    for (const auto& [name, vob] : session.viewers()) {
        std::string roles;
        for (const auto& [bit, role] : {std::pair{Vob::kStatusSource, " source"},
                                        {Vob::kStatusRecord, " record"},
                                        {Vob::kStatusPlay, " play"}})
            if (vob->hasStatus(bit))
                roles += role;
        session.say(format(
            "%c %s: %s at %s, %zu clients%s", name == session.viewerName() ? '*' : ' ',
            name.c_str(), vob->hasEdit() ? toUtf8(vob->getEdit()->getName()).c_str() : "no edit",
            timeText(vob->getCurrentTime()).c_str(), vob->getNumClients(), roles.c_str()));
    }
}

void tellViewing(Session& session, SessionWords& words) {
    const Cookie edit = require(findEditCookie(words.take("an edit")));
    const VobManager& manager = VobManager::instance();
    std::string names;
    for (const auto& vob : manager.getAllVobs(edit))
        names += ' ' + session.nameOf(vob.get());
    session.say(format("  %u:", manager.numRefs(edit)) + names);
}

void viewEdits(Session& session, SessionWords& words) {
    std::vector<EditPtr> edits;
    while (!words.done())
        edits.push_back(takeEdit(words));
    session.viewer()->setViewEdits(std::move(edits));
    const EditPtr master(session.viewer()->getMasterViewCookie());
    session.say("shows " + (master ? toUtf8(master->getName()) : std::string("nothing")));
}

void use(Session& session, SessionWords& words) {
    if (words.left() == 1 || !words.takeIf("on")) {
        session.useViewer(words.take("a viewer"));
        return;
    }
    const std::string& name = words.take("an edit");
    const Kv::Ptr<Vob> vob = VobManager::instance().getVobWithCookie(require(findEditCookie(name)));
    if (!vob)
        refuse(StatusCode::notFound, name, "no viewer shows it");
    session.useViewer(session.nameOf(vob.get()));
}

void group(Session& session, SessionWords& words) {
    const Kv::Ptr<Vob> vob = session.viewer();
    VobManager& manager = VobManager::instance();
    if (words.takeIf("legacy"))
        vob->setGroupId(static_cast<unsigned>(words.takeInt("a number", 0, 1'000'000)));
    else if (!words.done())
        vob->setGroupId(words.take("a group"));
    std::string members;
    for (const auto& member : manager.getVobGroup(vob))
        members += ' ' + session.nameOf(member.get());
    std::string playing;
    for (const auto& member : manager.getPlaybackGroup(vob))
        playing += ' ' + session.nameOf(member.get());
    session.say(
        std::string(manager.isGrouped(vob) ? "grouped:" : "alone:") + members +
        "; plays:" + playing + "; " + manager.getGroupFrameRate(vob).asString() + " fps" +
        (vob->getLegacyGroupId() < 0 ? "" : "; legacy " + std::to_string(vob->getLegacyGroupId())));
}

} // namespace

void addViewerVerbs(VerbTable& verbs) {
    verbs.heading("Viewers");
    verbs.add({"open", "EDIT|new|clipboard [as NAME]",
               "opens a viewer; the names source and record give the role too", openViewer});
    verbs.add({"again", "[fresh] [as NAME]",
               "a second viewer of the same edit, with the same time, marks and selection", again});
    verbs.add({"use", "NAME | on EDIT",
               "makes a viewer, or the first on an edit, the one to act on", use});
    verbs.add({"viewers", "", "lists the viewers with their time and roles", listViewers});
    verbs.add({"viewing?", "EDIT", "tells which viewers show an edit", tellViewing});
    verbs.add({"view", "EDIT|new [keep]",
               "views another edit instead; keep: with the present time and marks",
               [](Session& session, SessionWords& words) {
                   const EditPtr edit = words.takeIf("new") ? EditPtr() : takeEdit(words);
                   session.viewer()->setEdit(edit, words.takeIf("keep"));
               }});
    verbs.add({"take-module", "VIEWER [quiet]",
               "takes over the time, marks and selection of another viewer",
               [](Session& session, SessionWords& words) {
                   const Kv::Ptr<Vob> from = session.viewerNamed(words.take("a viewer"));
                   session.viewer()->setEditModule(from->getEditModule(), !words.takeIf("quiet"));
               }});
    verbs.add({"view-edits", "[EDIT ...]", "edits shown in place of the viewer's own", viewEdits});
    verbs.add({"stills", "N", "gives the viewer N providers of stills",
               [](Session& session, SessionWords& words) {
                   Vob::StillsProviders providers;
                   for (long long i = words.takeInt("a number", 0, 100); i > 0; --i)
                       providers.push_back(Kv::makePtr<SessionStills>());
                   session.viewer()->setCustomStillsProviders(std::move(providers));
               }});
    verbs.add(
        {"revision", "", "tells that the edit is about to change to another revision",
         [](Session& session, SessionWords&) { session.viewer()->informImpendingRevision(); }});
    verbs.add({"group", "[ID | legacy N]", "the viewer's group, and who is in it", group});
    verbs.add({"close", "[NAME] [force]", "closes a viewer; its view is kept with the edit",
               closeViewer});
}

} // namespace cutroom::cli
