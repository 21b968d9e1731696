// A program that gives the library a deck, a clock, files, ids, a log, a console, redrawing and
// debug commands of its own. Loop, messages and texts are replaced in own_loop.
#include "CountedFiles.h"
#include "Deck.h"

#include "platform/base/IdSource.h"
#include "platform/base/Log.h"
#include "platform/host/Clock.h"
#include "platform/host/ConsoleFocus.h"
#include "platform/host/DebugCommands.h"
#include "platform/host/Host.h"
#include "platform/host/Redraw.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/EditManager.h"
#include "vob/VobManager.h"

#include <cstdio>
#include <map>
#include <memory>
#include <utility>

namespace {

// A simulation's time: it goes on when the program says so.
class Clock : public cutroom::iClock {
public:
    double now() const override { return seconds; }
    double seconds = 0;
};

// Counts, so that every run of the simulation makes the same project.
class Ids : public cutroom::iIdSource {
public:
    std::uint64_t nextId() override { return ++last_; }
    std::uint32_t secondsNow() override { return 1'700'000'000; }

private:
    std::uint64_t last_ = 0;
};

class Log : public cutroom::iLogSink {
public:
    void write(std::string_view message) override {
        std::printf("log: %.*s\n", static_cast<int>(message.size()), message.data());
    }
};

class Console : public cutroom::iConsoleFocus {
public:
    ConsoleEventHandler* get() const noexcept override { return holder_; }
    void set(ConsoleEventHandler* handler) override {
        ConsoleEventHandler* const before = std::exchange(holder_, handler);
        if (before && before != handler)
            before->handleConsoleFocus(); // the one that loses is told first
        if (handler && before != handler && holder_ == handler)
            handler->handleConsoleFocus();
    }
    void forget(const ConsoleEventHandler* handler) noexcept override {
        if (holder_ == handler)
            holder_ = nullptr;
    }

private:
    ConsoleEventHandler* holder_ = nullptr;
};

class Redraw : public cutroom::iRedraw {
public:
    void defer() override { ++depth_; }
    void resume() noexcept override {
        if (--depth_ == 0)
            ++drawn;
    }
    int drawn = 0;

private:
    int depth_ = 0;
};

class Commands : public cutroom::iDebugCommands {
public:
    Kv::Ptr<Guard> add(const LightweightString<char>& name,
                       std::function<void()> command) override {
        const auto place = table_->emplace(name, std::move(command)); // behind those of that name
        return Kv::makePtr<Kv::ActionGuard>([place, watched = std::weak_ptr<Table>(table_)] {
            if (const auto table = watched.lock()) // the guard may outlive the service
                table->erase(place);
        });
    }
    bool run(const LightweightString<char>& name) override {
        const auto after = table_->upper_bound(name);
        if (after == table_->begin() || std::prev(after)->first != name)
            return false;
        const std::function<void()> command = std::prev(after)->second;
        command();
        return true;
    }
    LightweightVector<LightweightString<char>> names() const override {
        LightweightVector<LightweightString<char>> all;
        for (auto entry = table_->begin(); entry != table_->end();
             entry = table_->upper_bound(entry->first))
            all.push_back(entry->first);
        return all;
    }

private:
    using Table = std::multimap<std::string, std::function<void()>>;
    std::shared_ptr<Table> table_ = std::make_shared<Table>();
};

class Viewer : public VobClient {
public:
    using VobClient::VobClient;
    void handleModifications(const EditModifications&, const VobModification& change) override {
        if (change.includes(kVobTime))
            std::printf("at %.2f s\n", change.getTime());
    }
    void notifyPlayStateChange(PlayStateNotifyType change) override {
        std::puts(change == kPlayStateStarted ? "playing" : "stopped");
    }
    void handleConsoleFocus(bool hasFocus) override {
        std::puts(hasFocus ? "the console acts on this viewer" : "the console has left");
    }
};

void play(Deck& deck, Commands& commands) {
    const EditModifier edit =
        EditManager::instance().makeNewEdit(makeNewEditCookie(), 1, 2, 60.0, Kv::FrameRate(25));
    Viewer viewer;
    const Kv::Ptr<Vob> vob = VobManager::instance().create(&viewer, edit.getCookie());
    VobManager::instance().setRecordMachine(vob.get(), VobManager::kTellNew);
    VobManager::instance().setPlayMachine(vob.get(), false);
    setConsoleFocus(vob.get());
    const Kv::Ptr<Guard> where =
        cutroom::addDebugCommand("where", [&] { LogBoth("%.2f s", vob->getCurrentTime()); });
    deck.turn(3);
    commands.run("where");
}

} // namespace

// own_services FOLDER: makes a project there.
int main(int count, char** words) {
    Deck deck;
    Clock clock;
    CountedFiles files;
    Ids ids;
    Log log;
    Console console;
    Redraw redraw;
    Commands commands;
    cutroom::HostServices services;
    services.transit = &deck;
    services.playServer = &deck;
    services.clock = &clock;
    services.files = &files;
    services.ids = &ids;
    services.log = &log;
    services.focus = &console;
    services.redraw = &redraw;
    services.debugCommands = &commands;
    const cutroom::ScopedHost host(services);

    const cutroom::Status opened =
        CurrentProject::open(count > 1 ? words[1] : "simulated", CurrentProject::Access::readWrite,
                             CurrentProject::IfMissing::create);
    if (!opened) {
        std::printf("%s\n", opened.text().c_str());
        return 1;
    }
    if (!EditManager::instance().getAllEdits().empty()) {
        std::puts("ids that count must not meet the project of another run");
        return 1;
    }
    play(deck, commands);
    // Tells the exit, so that what is viewed closes, and writes what is dirty.
    const cutroom::Status saved = EditManager::instance().handleProjectExit();
    const cutroom::Status closed = CurrentProject::close();
    std::printf("saved: %s, closed: %s, written and flushed: %s, drawn anew: %s\n",
                saved.ok() ? "yes" : "no", closed.ok() ? "yes" : "no",
                files.writes > 0 && files.flushes > 0 ? "yes" : "no", redraw.drawn ? "yes" : "no");
}
