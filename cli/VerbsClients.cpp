// Verbs that attach, order, move and drop clients.
#include "bins/CachedCookieContainer.h"
#include "cli/Names.h"
#include "cli/Session.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

namespace cutroom::cli {

namespace {

eClientPriority takePriority(SessionWords& words) {
    return static_cast<eClientPriority>(words.takeInt("a priority", -1'000'000, 1'000'000));
}

VobManager::eSignificantViewType takeRole(SessionWords& words) {
    return words.takeChoice<VobManager::eSignificantViewType>("a role",
                                                              {{"source", VobManager::kViewSource},
                                                               {"record", VobManager::kViewRecord},
                                                               {"play", VobManager::kViewPlay}});
}

// The first viewer of a group.
Kv::Ptr<Vob> takeGroup(SessionWords& words, bool legacy) {
    const VobManager& manager = VobManager::instance();
    std::string word;
    Kv::Ptr<Vob> vob;
    if (legacy) {
        const auto number = static_cast<int>(words.takeInt("a number", 0, 1'000'000));
        word = std::to_string(number);
        vob = manager.getVobWithId(manager.getVobIdForLegacyId(number));
    } else {
        word = words.take("a group");
        vob = manager.getVobWithId(word);
    }
    if (!vob)
        refuse(StatusCode::notFound, word, "no viewer is in such a group");
    return vob;
}

// How a client is to be attached.
struct Attachment {
    std::string name;
    eClientPriority priority = kClientPriorityLowest;
    eClientManagementDetails details = kClientUnmanaged;
    PrintingClient* manager = nullptr;
    bool image = false;
    Kv::Ptr<Vob> vob;      // to this viewer
    std::string on, group; // else to one of this edit, or on a new edit ("new")
    std::string from;      // else, as it is constructed, to one of this edit
};

Attachment takeAttachment(Session& session, SessionWords& words) {
    Attachment how;
    how.name = words.take("a name");
    if (session.hasClient(how.name))
        refuse(StatusCode::wrongUsage, how.name, "a client of this name is attached");
    while (!words.done()) {
        const auto& word = words.takeOneOf("a word", {"priority", "managed", "by", "image", "group",
                                                      "legacy", "in", "on", "from"});
        if (word == "priority")
            how.priority = takePriority(words);
        else if (word == "managed")
            how.details = kClientManaged;
        else if (word == "by")
            how.manager = &session.clientNamed(words.take("a client"));
        else if (word == "image")
            how.image = true;
        else if (word == "in")
            how.vob = session.viewerNamed(words.take("a viewer"));
        else if (word == "on" || word == "from")
            (word == "on" ? how.on : how.from) = words.take("an edit");
        else if (word == "group" && !how.on.empty())
            how.group = words.take("a group");
        else
            how.vob = takeGroup(words, word == "legacy");
    }
    if (!how.vob && how.on.empty() && how.from.empty())
        how.vob = session.viewer();
    return how;
}

std::unique_ptr<PrintingClient> makeClient(Session& session, const Attachment& how) {
    if (!how.from.empty())
        return std::make_unique<PrintingClient>(how.name, require(findEditCookie(how.from)),
                                                how.priority, how.details, session.printer());
    if (how.image)
        return std::make_unique<PrintingImageClient>(how.name, how.priority, how.details,
                                                     session.printer());
    return std::make_unique<PrintingClient>(how.name, how.priority, how.details, session.printer());
}

// The viewer that the manager gave the client, named when the session did not know it.
void nameViewer(Session& session, const Kv::Ptr<Vob>& vob) {
    for (const auto& [name, known] : session.viewers())
        if (known == vob)
            return session.say("in " + name);
    const std::string name = session.freeName("viewer");
    session.addViewer(name, vob);
    session.say(name + ": " + toUtf8(vob->getEdit()->getName()));
}

void attach(Session& session, SessionWords& words) {
    const Attachment how = takeAttachment(session, words);
    VobManager& manager = VobManager::instance();
    const Cookie edit =
        how.on.empty() || how.on == "new" ? Cookie() : require(findEditCookie(how.on));
    session.addClient(makeClient(session, how));
    PrintingClient& client = session.clientNamed(how.name);
    if (edit.valid())
        nameViewer(session, manager.create(&client, edit, how.group));
    else if (!how.on.empty())
        nameViewer(session, manager.create(&client, Kv::Ptr<Vob>()));
    else if (how.from.empty())
        manager.open(&client, how.vob);
    else
        nameViewer(session, Kv::Ptr<Vob>(client.getVob()));
    if (how.manager)
        how.manager->manage(&client);
}

void tellDestroyable(Session& session, SessionWords& words) {
    const PrintingClient& client = session.clientNamed(words.take("a client"));
    PrintingClient* const requester =
        words.takeIf("for") ? &session.clientNamed(words.take("a client")) : nullptr;
    session.say(client.isAutoDestroyable(requester) ? "  may be destroyed"
                                                    : "  may not be destroyed");
}

void listClients(Session& session, SessionWords&) {
    const Kv::Ptr<Vob> vob = session.viewer();
    for (std::size_t i = 0; i < vob->getNumClients(); ++i) {
        VobClient* const client = vob->getClientPtr(i);
        session.say(format("  %s priority %d%s%s", client->idstring(), client->getPriority(),
                           client->getManagementDetails() == kClientUnmanaged ? "" : " managed",
                           VobManager::instance().isStickyClient(client) ? " sticky" : ""));
    }
    const VobClient* master = vob->findMasterClient();
    if (master)
        session.say(std::string("  master: ") + master->idstring());
}

// What a client holds, as anything that takes over its contents sees it.
void tellContents(Session& session, SessionWords& words) {
    const CachedCookieContainer held(session.clientNamed(words.take("a client")));
    session.say("  \"" + toUtf8(held.getName()) + "\" " + toUtf8(held.getTypeName()));
    for (const AssetReference& asset : held.getCookies())
        session.say(std::string("  ") + asset.cookie.type() + "-asset" +
                    (asset.hasRange() ? " from " + timeText(asset.range.getStart()) + " to " +
                                            timeText(asset.range.getEnd())
                                      : ""));
}

void whenTold(Session& session, SessionWords& words) {
    PrintingClient& client = session.clientNamed(words.take("a client"));
    std::string line;
    while (!words.done())
        line += (line.empty() ? "" : " ") + ('"' + words.take("a line") + '"');
    client.reactOnce([&session, line] {
        if (const Status done = session.runNested(line); !done)
            session.say("  " + done.text());
    });
}

void transfer(Session& session, SessionWords& words) {
    const Kv::Ptr<Vob> from = session.viewerNamed(words.take("a viewer"));
    const Kv::Ptr<Vob> to = session.viewerNamed(words.take("a viewer"));
    unsigned flags = 0;
    while (!words.done())
        flags |= words.takeOneOf("a word", {"module", "keep-roles"}) == "module"
                     ? Vob::kTransferModule
                     : Vob::kTransferKeepRoles;
    Vob::transferClients(from.get(), to.get(), flags);
}

} // namespace

void addClientVerbs(VerbTable& verbs) {
    verbs.heading("Clients");
    verbs.add({"client",
               "NAME [priority N] [managed] [by CLIENT] [image] [in VIEWER] [on EDIT|new] "
               "[from EDIT] [group ID | legacy N]",
               "attaches a client that prints what it is told: to the viewer, to one of an edit "
               "(made if need be), or as it is constructed",
               attach});
    verbs.add({"destroyable?", "CLIENT [for CLIENT]",
               "tells whether a client may be destroyed on behalf of another", tellDestroyable});
    verbs.add({"holds?", "CLIENT", "tells the assets that a client holds", tellContents});
    verbs.add(
        {"clients", "", "lists the viewer's clients in the order of their telling", listClients});
    verbs.add({"priority", "CLIENT N", "gives a client another priority",
               [](Session& session, SessionWords& words) {
                   PrintingClient& client = session.clientNamed(words.take("a client"));
                   client.setPriority(takePriority(words));
               }});
    verbs.add({"drop", "CLIENT", "detaches and destroys a client",
               [](Session& session, SessionWords& words) {
                   session.removeClient(words.take("a client"));
               }});
    verbs.add({"message", "CLIENT TEXT", "sends a text to a client of the viewer",
               [](Session& session, SessionWords& words) {
                   const std::string name = words.take("a client");
                   session.viewer()->sendMessageToClient(name, words.take("a text"));
               }});
    verbs.add(
        {"when-told", "CLIENT VERB ...", "what a client does the next time it is told", whenTold});
    verbs.add({"move", "CLIENT VIEWER|new", "moves a client to another viewer",
               [](Session& session, SessionWords& words) {
                   PrintingClient& client = session.clientNamed(words.take("a client"));
                   if (words.takeIf("new"))
                       session.addViewer(session.freeName("viewer"),
                                         VobManager::instance().moveToNewVob(&client, true, true));
                   else
                       VobManager::instance().moveToVob(
                           &client, session.viewerNamed(words.take("a viewer")));
               }});
    verbs.add({"transfer", "FROM TO [module] [keep-roles]",
               "moves all clients, with the module, and the roles unless kept", transfer});
    verbs.add({"sticky", "CLIENT source|record|play", "makes a client follow a role",
               [](Session& session, SessionWords& words) {
                   PrintingClient& client = session.clientNamed(words.take("a client"));
                   VobManager::instance().addStickyClient(&client, takeRole(words));
               }});
    verbs.add({"unstick", "CLIENT", "ends that", [](Session& session, SessionWords& words) {
                   VobManager::instance().removeStickyClient(
                       &session.clientNamed(words.take("a client")));
               }});
    verbs.add({"destroy-managed", "", "destroys the managed clients of the viewer",
               [](Session& session, SessionWords&) { session.dropManagedClients(); }});
}

} // namespace cutroom::cli
