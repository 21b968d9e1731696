// The live session: viewed edits opened by name, clients that print what they are told, and a
// language of one verb a line. docs/session.md describes it for people.
#pragma once

#include "cli/ContainerWatch.h"
#include "cli/MonitorWatch.h"
#include "cli/PrintingClient.h"
#include "cli/SessionLinks.h"
#include "cli/SessionWords.h"
#include "cli/Workspace.h"
#include "editops/basics/IndexIndependentEventList.h"
#include "platform/base/Ptr.h"
#include "platform/store/EditPtr.h"
#include "vob/Vob.h"
#include "vob/VobManager.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom::cli {

class Session;

// One verb: its words as shown by `help` and as the line must have them (see VerbUsage.h), what it
// does, and how.
struct Verb {
    const char* name;
    const char* words;
    const char* about;
    std::function<void(Session&, SessionWords&)> run;
};

// The verbs, in the order in which `help` tells them.
class VerbTable {
public:
    VerbTable();
    const Verb* find(std::string_view name) const;
    // Begins a group of verbs under a heading.
    void heading(const char* text);
    void add(Verb verb);
    // One line each, or what one verb does.
    std::string help(std::string_view name) const;

private:
    struct Group {
        const char* heading;
        std::vector<const Verb*> verbs;
    };
    std::deque<Verb> verbs_;
    std::vector<Group> groups_;
};

// Each adds the verbs of one concern.
void addViewerVerbs(VerbTable& verbs);
void addClientVerbs(VerbTable& verbs);
void addTimeVerbs(VerbTable& verbs);
void addNavigationVerbs(VerbTable& verbs);
void addMarkVerbs(VerbTable& verbs);
void addSelectionVerbs(VerbTable& verbs);
void addRoleVerbs(VerbTable& verbs);
void addBatchVerbs(VerbTable& verbs);
void addCutVerbs(VerbTable& verbs);
void addCopyVerbs(VerbTable& verbs);
void addCueVerbs(VerbTable& verbs);
void addTransitionVerbs(VerbTable& verbs);
void addChannelVerbs(VerbTable& verbs);
void addDetailVerbs(VerbTable& verbs);
void addMixVerbs(VerbTable& verbs);
void addMonitorVerbs(VerbTable& verbs);
void addSyncVerbs(VerbTable& verbs);
void addContainerVerbs(VerbTable& verbs);
void addBinVerbs(VerbTable& verbs);
void addBinViewVerbs(VerbTable& verbs);
void addAssetVerbs(VerbTable& verbs);
void addFilterVerbs(VerbTable& verbs);
void addSearchVerbs(VerbTable& verbs);
void addProjectVerbs(VerbTable& verbs);

// One session on one open project. User-interface thread.
class Session {
public:
    explicit Session(Workspace& workspace);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Does what one line says, then lets the loop deliver what was posted. A failure leaves
    // everything as the line found it, as far as the library promises it, the steps of undo and
    // redo too.
    Status run(std::string_view line);
    // The same from inside a client that is being told: nothing posted is delivered.
    Status runNested(std::string_view line);
    // True once a line has asked to end.
    bool ended() const noexcept { return ended_; }
    void end() noexcept { ended_ = true; }

    // --- for the verbs -------------------------------------------------------------------------
    const VerbTable& verbs() const noexcept { return verbs_; }
    EmbeddedHost& host() noexcept { return workspace_.host(); }
    const std::string& folder() const noexcept { return workspace_.folder(); }
    Printer printer() const;
    void say(const std::string& text) const;

    // Viewers by name. `viewer()` refuses when none is open.
    void addViewer(const std::string& name, const Kv::Ptr<Vob>& vob);
    void removeViewer(const std::string& name);
    void useViewer(const std::string& name);
    Kv::Ptr<Vob> viewer() const;
    Kv::Ptr<Vob> viewerNamed(const std::string& name) const;
    const std::string& viewerName() const noexcept { return current_; }
    std::string nameOf(const Vob* vob) const;
    const std::map<std::string, Kv::Ptr<Vob>>& viewers() const noexcept { return viewers_; }
    std::string freeName(const std::string& wanted) const;
    // The name that follows "as", else a free one; refuses that of a viewer that is open.
    std::string takeViewerName(SessionWords& words) const;
    // Forgets viewers that the manager has closed.
    void dropClosedViewers();

    // Clients by name.
    void addClient(std::unique_ptr<PrintingClient> client);
    void removeClient(const std::string& name);
    PrintingClient& clientNamed(const std::string& name) const;
    bool hasClient(const std::string& name) const;
    // Has the manager destroy the managed clients of the current viewer.
    void dropManagedClients();
    const std::vector<std::unique_ptr<PrintingClient>>& clients() const noexcept {
        return clients_;
    }

    // The edit of the current viewer; refuses without one. `editForChange` also refuses a read-only
    // edit and makes the step that undo goes back to, described by the line.
    EditPtr edit() const;
    EditModifier editForChange();
    // "V1", "A2" or a channel's own name; "all" (the empty id) where `allowAll`.
    IdStamp takeChannel(SessionWords& words, bool allowAll = false) const;
    int takeChannelNumber(SessionWords& words) const;
    // A place in the current edit: timecode, seconds, frames, or "now", "start", "end".
    double takePlace(SessionWords& words, const char* what = "a time") const;
    // The same in the edit of another viewer.
    double takePlaceOf(const Vob& viewer, SessionWords& words) const;
    // Frames ("12f") or seconds, as flicks.
    Flicks takeLength(SessionWords& words, const char* what = "a length") const;
    std::string channelName(const IdStamp& channel) const;
    // What is kept of bins, groups and documents.
    SessionContainers& containers() noexcept { return containers_; }
    // The links between viewers.
    SessionLinks& links() noexcept { return links_; }
    // The monitors of viewers and the audio components.
    SessionMonitors& monitors() noexcept { return monitors_; }
    // Keeps a machine for as long as viewers may name it.
    AVMachine& machine(std::unique_ptr<AVMachine> machine);
    // A segment that is found again by its points, whatever changed since.
    IndexIndependentEventList& remembered() noexcept { return remembered_; }
    // Prints the role changes that the manager tells, from now on.
    void watchRoles();

private:
    void perform(SessionWords& words);

    Workspace& workspace_;
    VerbTable verbs_;
    std::map<std::string, Kv::Ptr<Vob>> viewers_;
    std::string current_;
    std::vector<std::unique_ptr<PrintingClient>> clients_;
    std::vector<Kv::Ptr<Guard>> roleWatch_;
    SessionContainers containers_;
    SessionLinks links_;
    SessionMonitors monitors_;
    std::vector<std::unique_ptr<AVMachine>> machines_;
    IndexIndependentEventList remembered_;
    std::string line_;
    EditPtr stepped_; // the edit that got a step for this line
    bool ended_ = false;
    bool leaving_ = false;
};

} // namespace cutroom::cli
