#include "cli/Session.h"

#include "cli/Command.h"
#include "cli/Names.h"
#include "cli/Permission.h"
#include "cli/VerbUsage.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <algorithm>
#include <utility>

namespace cutroom::cli {

namespace {

// A channel by its type and place, whatever its own name: "V1", "A2", "L1" levels, "S1" subtitles.
std::string placeName(const Edit& edit, const IdStamp& channel) {
    const EditChanType type = edit.getChanType(channel);
    const char letter = type == kChanVideo      ? 'V'
                        : type == kChanAudio    ? 'A'
                        : type == kChanLevels   ? 'L'
                        : type == kChanSubtitle ? 'S'
                                                : 'X';
    return letter + std::to_string(edit.getIndexWithinType(channel) + 1);
}

// The place in `edit` that a word names; "now" is where `viewer` stands.
double placeIn(const EditPtr& edit, const Vob& viewer, const std::string& word) {
    if (word == "now")
        return viewer.getCurrentTime(EditModule::kAccuracyExact);
    if (word == "start")
        return edit->getStartTime();
    if (word == "end")
        return edit->getEndTime();
    return require(parsePlace(word, edit));
}

} // namespace

VerbTable::VerbTable() {
    addViewerVerbs(*this);
    addClientVerbs(*this);
    addTimeVerbs(*this);
    addNavigationVerbs(*this);
    addMarkVerbs(*this);
    addSelectionVerbs(*this);
    addRoleVerbs(*this);
    addBatchVerbs(*this);
    addCutVerbs(*this);
    addCopyVerbs(*this);
    addCueVerbs(*this);
    addTransitionVerbs(*this);
    addChannelVerbs(*this);
    addDetailVerbs(*this);
    addMixVerbs(*this);
    addMonitorVerbs(*this);
    addSyncVerbs(*this);
    addContainerVerbs(*this);
    addBinVerbs(*this);
    addBinViewVerbs(*this);
    addAssetVerbs(*this);
    addFilterVerbs(*this);
    addSearchVerbs(*this);
    addProjectVerbs(*this);
}

void VerbTable::heading(const char* text) { groups_.push_back({text, {}}); }

void VerbTable::add(Verb verb) {
    verbs_.push_back(std::move(verb));
    groups_.back().verbs.push_back(&verbs_.back());
}

const Verb* VerbTable::find(std::string_view name) const {
    const auto found = std::find_if(verbs_.begin(), verbs_.end(),
                                    [&](const Verb& verb) { return name == verb.name; });
    return found == verbs_.end() ? nullptr : &*found;
}

std::string VerbTable::help(std::string_view name) const {
    constexpr int kUsageWidth = 34;
    if (const Verb* verb = find(name))
        return std::string(verb->name) + ' ' + verb->words + "\n    " + verb->about + '\n';
    std::string text;
    for (const Group& group : groups_) {
        text += std::string(group.heading) + '\n';
        for (const Verb* verb : group.verbs) {
            const std::string usage = std::string(verb->name) + ' ' + verb->words;
            if (usage.size() > kUsageWidth)
                text +=
                    "  " + usage + '\n' + std::string(kUsageWidth + 3, ' ') + verb->about + '\n';
            else
                text += format("  %-*s %s\n", kUsageWidth, usage.c_str(), verb->about);
        }
    }
    return text;
}

Session::Session(Workspace& workspace) : workspace_(workspace) {
    host().messages().setPrinter([this](const EmbeddedMessages::Shown& shown) {
        say("message to the user: " + toUtf8(shown.text));
    });
}

// Clients go before the Vobs they are attached to, managing ones before those they manage.
Session::~Session() {
    leaving_ = true; // nothing is printed from here on
    host().messages().setPrinter(nullptr);
    links_.clear();
    monitors_.clear();
    while (!clients_.empty())
        removeClient(clients_.back()->name());
    for (const Kv::Ptr<Vob>& vob : VobManager::instance().getAllVobs())
        vob->setDevice(nullptr); // the machines go with the session
    viewers_.clear();
}

Status Session::run(std::string_view line) {
    const Status done = runNested(line);
    host().loop().pump();
    dropClosedViewers();
    return done;
}

Status Session::runNested(std::string_view line) {
    const std::string outer = std::exchange(line_, std::string(trim(line)));
    const EditPtr outerStepped = std::exchange(stepped_, EditPtr());
    Status outcome;
    try {
        SessionWords words = SessionWords::parse(line_);
        if (!words.done())
            perform(words);
    } catch (const Refused& refused) {
        outcome = refused.status;
        EditManager::instance().dropBackup(stepped_);
    }
    line_ = outer;
    stepped_ = outerStepped;
    return outcome;
}

void Session::perform(SessionWords& words) {
    const std::string name = words.take("a verb");
    const Verb* verb = verbs_.find(name);
    if (!verb)
        refuse(StatusCode::wrongUsage, name, "no such verb; `help` tells them all");
    require(VerbUsage(verb->words).check(name, words.rest()));
    verb->run(*this, words);
    words.expectEnd();
}

void Session::say(const std::string& text) const {
    if (leaving_)
        return;
    for (const std::string& line : split(text, '\n'))
        print(oneLine(line, Tabs::keep) + '\n');
}

Printer Session::printer() const {
    return [this](const std::string& text) { say("  " + text); };
}

void Session::addViewer(const std::string& name, const Kv::Ptr<Vob>& vob) {
    viewers_[name] = vob;
    current_ = name;
}

void Session::removeViewer(const std::string& name) {
    viewers_.erase(name);
    if (current_ == name)
        current_ = viewers_.empty() ? std::string() : viewers_.begin()->first;
}

void Session::dropClosedViewers() {
    const auto& open = VobManager::instance().getAllVobs();
    std::vector<std::string> closed;
    for (const auto& [name, vob] : viewers_)
        if (std::find(open.begin(), open.end(), vob) == open.end())
            closed.push_back(name);
    for (const auto& name : closed)
        removeViewer(name);
}

void Session::useViewer(const std::string& name) {
    viewerNamed(name);
    current_ = name;
}

Kv::Ptr<Vob> Session::viewer() const {
    if (current_.empty())
        refuse(StatusCode::failed, "viewer", "none is open; `open EDIT` opens one");
    return viewers_.at(current_);
}

Kv::Ptr<Vob> Session::viewerNamed(const std::string& name) const {
    const auto found = viewers_.find(name);
    if (found == viewers_.end())
        refuse(StatusCode::notFound, name, "no viewer of this name is open");
    return found->second;
}

std::string Session::nameOf(const Vob* vob) const {
    for (const auto& [name, other] : viewers_)
        if (other == vob)
            return name;
    return vob ? "an unnamed viewer" : "nobody";
}

std::string Session::freeName(const std::string& wanted) const {
    std::string name = wanted;
    for (int number = 2; viewers_.contains(name); ++number)
        name = wanted + std::to_string(number);
    return name;
}

std::string Session::takeViewerName(SessionWords& words) const {
    const std::string name = words.takeIf("as") ? words.take("a name") : freeName("viewer");
    if (viewers_.contains(name))
        refuse(StatusCode::wrongUsage, name, "a viewer of this name is open");
    return name;
}

void Session::addClient(std::unique_ptr<PrintingClient> client) {
    clients_.push_back(std::move(client));
}

// Taken out of the list before it is destroyed: clients that are told of its end may ask for
// clients.
void Session::removeClient(const std::string& name) {
    const PrintingClient* wanted = &clientNamed(name);
    const auto found = std::find_if(clients_.begin(), clients_.end(),
                                    [&](const auto& client) { return client.get() == wanted; });
    const std::unique_ptr<PrintingClient> going = std::move(*found);
    clients_.erase(found);
    for (const auto& client : clients_)
        client->forget(going.get());
    VobManager::instance().close(going.get(), false); // while it still has its own name
}

// The manager deletes what it destroys, so the session lets go first.
void Session::dropManagedClients() {
    const Kv::Ptr<Vob> vob = viewer();
    for (auto& client : clients_)
        if (client->getVob() == vob.get() && client->getManagementDetails() != kClientUnmanaged) {
            for (const auto& other : clients_)
                if (other)
                    other->forget(client.get());
            static_cast<void>(client.release());
        }
    std::erase(clients_, nullptr);
    if (!VobManager::instance().destroyManagedClients(vob))
        say("unmanaged clients stay");
}

bool Session::hasClient(const std::string& name) const {
    return std::any_of(clients_.begin(), clients_.end(),
                       [&](const auto& client) { return client->name() == name; });
}

PrintingClient& Session::clientNamed(const std::string& name) const {
    for (const auto& client : clients_)
        if (client->name() == name)
            return *client;
    refuse(StatusCode::notFound, name, "no client of this name");
}

EditPtr Session::edit() const {
    EditPtr edit = viewer()->getEdit();
    if (!edit)
        refuse(StatusCode::failed, current_, "this viewer is without edit");
    return edit;
}

EditModifier Session::editForChange() {
    const EditPtr changed = edit();
    require(mayChange(changed));
    EditManager::instance().makeBackup(changed, line_);
    stepped_ = changed;
    return EditModifier(changed, line_);
}

IdStamp Session::takeChannel(SessionWords& words, bool allowAll) const {
    const std::string& word = words.take("a channel");
    if (allowAll && word == "all")
        return {};
    const EditPtr from = edit();
    const std::wstring wanted = toWide(word);
    for (const IdStamp& channel : from->getChans())
        if (from->getChanDisplayName(channel) == wanted || channel.asString() == word)
            return channel;
    for (const IdStamp& channel : from->getChans())
        if (placeName(*from, channel) == word)
            return channel;
    std::string known;
    for (const IdStamp& channel : from->getChans())
        known += (known.empty() ? "" : ", ") + placeName(*from, channel);
    refuse(StatusCode::notFound, word, "no such channel; there are " + known);
}

int Session::takeChannelNumber(SessionWords& words) const {
    if (words.takeIf("all"))
        return kChanAllSelected;
    return edit()->getIdx(takeChannel(words));
}

double Session::takePlace(SessionWords& words, const char* what) const {
    const std::string& word = words.take(what);
    return placeIn(edit(), *viewer(), word);
}

double Session::takePlaceOf(const Vob& viewer, SessionWords& words) const {
    const std::string& word = words.take("a time");
    const EditPtr edit = viewer.getEdit();
    if (!edit)
        refuse(StatusCode::failed, nameOf(&viewer), "this viewer is without edit");
    return placeIn(edit, viewer, word);
}

Flicks Session::takeLength(SessionWords& words, const char* what) const {
    const std::string& word = words.take(what);
    const double seconds = require(parsePlace(word, edit()));
    if (word.find(':') != word.npos)
        refuse(StatusCode::wrongUsage, word, "a length is in seconds (2.5) or frames (60f)");
    return toFlicks(seconds);
}

std::string Session::channelName(const IdStamp& channel) const {
    return toUtf8(edit()->getChanDisplayName(channel));
}

AVMachine& Session::machine(std::unique_ptr<AVMachine> machine) {
    machines_.push_back(std::move(machine));
    return *machines_.back();
}

void Session::watchRoles() {
    VobManager& manager = VobManager::instance();
    const auto watch = [&](int type, const char* role, Kv::Ptr<Vob> (VobManager::*holder)() const) {
        roleWatch_.push_back(manager.registerNotification(
            makeCallback<NotifyMsg>([this, role, holder](const NotifyMsg&) {
                say(std::string("  roles: ") + role + " is " +
                    nameOf((VobManager::instance().*holder)().get()));
            }),
            type));
    };
    watch(manager.sourceChangedMsgType(), "source", &VobManager::getSourceMachine);
    watch(manager.recordChangedMsgType(), "record", &VobManager::getRecordMachine);
    watch(manager.focusChangedMsgType(), "play", &VobManager::getPlayMachine);
}

} // namespace cutroom::cli
