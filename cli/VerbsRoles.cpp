// Verbs that give the source, record and play roles.
#include "cli/Session.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/Edit.h"

namespace cutroom::cli {

namespace {

// Moves a role, and nothing that usually goes with it.
void giveRaw(const std::string& role, Vob* vob) {
    VobManager& manager = VobManager::instance();
    if (role == "source")
        manager.setSourceMachineRaw(vob);
    else if (role == "record")
        manager.setRecordMachineRaw(vob);
    else
        manager.setPlayMachineRaw(vob);
}

void role(Session& session, SessionWords& words) {
    const std::string role = words.takeOneOf("a role", {"source", "record", "play"});
    Kv::Ptr<Vob> vob = session.viewer();
    bool makeSource = false, raw = false;
    unsigned flags = VobManager::kTellOld | VobManager::kTellNew;
    while (!words.done()) {
        const std::string word = words.take("a word");
        if (word == "none")
            vob = nullptr;
        else if (word == "quiet")
            flags = 0;
        else if (word == "quiet-old" || word == "quiet-new")
            flags &= ~unsigned{word == "quiet-old" ? VobManager::kTellOld : VobManager::kTellNew};
        else if (word == "as-source")
            makeSource = true;
        else if (word == "raw")
            raw = true;
        else
            vob = session.viewerNamed(word);
    }
    VobManager& manager = VobManager::instance();
    if (raw)
        giveRaw(role, vob.get());
    else if (role == "source")
        manager.setSourceMachine(vob.get(), flags);
    else if (role == "record")
        manager.setRecordMachine(vob.get(), flags);
    else
        manager.setPlayMachine(vob.get(), makeSource);
}

void tellRoles(Session& session, SessionWords&) {
    VobManager& manager = VobManager::instance();
    session.say(
        "source " + session.nameOf(manager.getSourceMachine().get()) + ", record " +
        session.nameOf(manager.getRecordMachine().get()) + ", play " +
        session.nameOf(manager.getPlayMachine().get()) + ", previous source " +
        session.nameOf(manager.getPreviousSourceMachine().get()) +
        (manager.isPlayMachineAssignmentValid() ? "" : "; nothing can be given to play now"));
}

void eligible(Session& session, SessionWords& words) {
    unsigned statuses = 0;
    while (!words.done()) {
        statuses |= words.takeChoice<unsigned>("a role", {{"source", Vob::kStatusSource},
                                                          {"record", Vob::kStatusRecord},
                                                          {"play", Vob::kStatusPlay},
                                                          {"none", 0}});
    }
    session.viewer()->setStatusEligibility(statuses);
}

void protect(Session& session, SessionWords& words) {
    PermissionsManager& permissions = PermissionsManager::instance();
    const Cookie cookie = session.edit()->getCookie();
    const auto& what = words.takeOneOf("a word", {"lock", "unlock", "protect", "free", "user"});
    if (what == "lock")
        require(permissions.lock(cookie));
    else if (what == "unlock")
        require(permissions.unlock(cookie));
    else if (what == "user")
        permissions.setCurrentUser(words.take("a name"));
    else
        require(permissions.setProtected(cookie, what == "protect"));
}

void tellEditable(Session& session, SessionWords&) {
    const Kv::Ptr<Vob> vob = session.viewer();
    const std::string holder = PermissionsManager::instance().getLockHolder(vob->getCookie());
    session.say(std::string(vob->isEditable() ? "editable" : "not editable") +
                (vob->isReadOnly() ? ", read-only" : "") +
                (holder.empty() ? "" : ", locked by " + holder) +
                (vob->isTrimViewPossible() ? ", trim view possible" : ""));
}

} // namespace

void addRoleVerbs(VerbTable& verbs) {
    verbs.heading("Roles and permissions");
    verbs.add({"role",
               "source|record|play [VIEWER|none] [quiet|quiet-old|quiet-new] [as-source] [raw]",
               "gives a role to the viewer, another one, or nobody; raw: only moves it", role});
    verbs.add({"roles?", "", "tells who has which role", tellRoles});
    verbs.add({"give-up-roles", "[VIEWER]", "takes every role away from the viewer or another one",
               [](Session& session, SessionWords& words) {
                   const Kv::Ptr<Vob> vob = words.done()
                                                ? session.viewer()
                                                : session.viewerNamed(words.take("a viewer"));
                   VobManager::instance().removeFocusFrom(vob.get());
               }});
    verbs.add({"watch-roles", "", "prints changes of roles from now on",
               [](Session& session, SessionWords&) { session.watchRoles(); }});
    verbs.add({"auto-record", "", "gives the record role, taking over a lock of another user",
               [](Session& session, SessionWords&) {
                   VobManager::instance().autoEnableRecordStatus(session.viewer().get());
               }});
    verbs.add({"eligible", "[source] [record] [play] [none]", "roles that the viewer can take",
               eligible});
    verbs.add({"focus", "", "gives the viewer the console focus",
               [](Session& session, SessionWords&) { setConsoleFocus(session.viewer().get()); }});
    verbs.add(
        {"permit", "lock|unlock|protect|free | user NAME", "who may change the edit", protect});
    verbs.add({"editable?", "", "tells whether the viewer can change its edit", tellEditable});
}

} // namespace cutroom::cli
