// cutroom shell [SCRIPT]
#include "cli/Command.h"
#include "cli/Session.h"
#include "platform/base/Log.h"

#include <CLI/CLI.hpp>

#include <array>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <signal.h>
#include <unistd.h>

namespace cutroom::cli {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

// In a session the log belongs to what the user sees.
class SessionLog final : public iLogSink {
public:
    SessionLog() : former_(installLogSink(this)) {}
    ~SessionLog() override { installLogSink(former_); }
    void write(std::string_view message) override {
        std::string line(message);
        if (!line.ends_with('\n'))
            line += '\n';
        print("log: " + line);
    }

private:
    iLogSink* former_;
};

// While it lives, Ctrl-C, a closed terminal and a request to end are remembered: the session ends
// after its line and keeps what was done. The third one ends the program at once.
class EndWatch {
public:
    EndWatch() {
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            ::sigaction(kSignals[i], nullptr, &before_[i]);
        watch(SA_RESTART);
    }
    ~EndWatch() {
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            ::sigaction(kSignals[i], &before_[i], nullptr);
    }
    EndWatch(const EndWatch&) = delete;
    EndWatch& operator=(const EndWatch&) = delete;

    // The signal that came; 0 when none did.
    static int signal() noexcept { return signal_; }
    // The next line. A signal ends the waiting for it, and what it cut short is no line.
    bool takeLine(std::istream& lines, std::string& line) {
        watch(0);
        const bool taken = signal() == 0 && std::getline(lines, line) && signal() == 0;
        watch(SA_RESTART); // or it would cut short what is being written
        return taken;
    }

private:
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
    void watch(int flags) {
        struct sigaction action {};
        action.sa_handler = &note;
        action.sa_flags = flags;
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            if (before_[i].sa_handler != SIG_IGN) // a background job, or nohup: it stays so
                ::sigaction(kSignals[i], &action, nullptr);
    }
    static void note(int signal) {
        signal_ = signal;
        count_ = count_ + 1;
        if (count_ < 3)
            return;
        ::signal(signal, SIG_DFL);
        ::raise(signal);
    }

    static inline volatile std::sig_atomic_t signal_ = 0;
    static inline volatile std::sig_atomic_t count_ = 0;
    std::array<struct sigaction, kSignals.size()> before_{};
};

struct Source {
    std::istream& lines;
    std::string name;
    bool interactive = false;
};

// Has the loop of a session whose clock is the real one stop waiting when a signal came.
Kv::Ptr<Guard> endWaiting(EmbeddedLoop& loop, const Options& options) {
    constexpr double kLookEvery = 0.1; // seconds
    return options.repeatable ? Kv::Ptr<Guard>() : loop.addTimer(kLookEvery, kLookEvery, [&loop] {
        if (EndWatch::signal() != 0)
            loop.quit();
    });
}

// A script ends at its first failure; a person is told and goes on. Both end when nobody can read
// what is printed, and by a signal.
Status runLines(Workspace& workspace, const Options& options, EndWatch& watch, Source source) {
    const SessionLog log;
    Session session(workspace);
    const Kv::Ptr<Guard> waits = endWaiting(workspace.host().loop(), options);
    std::string line;
    for (long number = 1; !session.ended() && !outputFailed(); ++number) {
        if (source.interactive)
            print("cutroom> ");
        if (!watch.takeLine(source.lines, line))
            break;
        if (number == 1 && line.starts_with(kByteOrderMark))
            line.erase(0, kByteOrderMark.size());
        const Status done = session.run(line);
        if (done)
            continue;
        const Status placed(done.code(), source.name, done.text(), number);
        if (!source.interactive)
            return placed;
        fail(done);
    }
    return source.lines.bad() ? Status(StatusCode::inputOutput, source.name, "cannot be read")
                              : Status();
}

int run(const Options& options, const std::string& script) {
    std::ifstream file;
    if (!script.empty()) {
        file.open(script);
        if (!file)
            return fail({StatusCode::notFound, script, "cannot be opened"});
    }
    std::optional<EndWatch> watch(std::in_place);
    const int code = withProject(options, Workspace::Use::writeOrCreate, [&](Workspace& workspace) {
        const bool interactive = script.empty() && ::isatty(STDIN_FILENO);
        return runLines(workspace, options, *watch,
                        {script.empty() ? std::cin : file,
                         script.empty() ? "standard input" : script, interactive});
    });
    watch.reset();
    if (EndWatch::signal() != 0) { // for who waits for the program it ends by the signal
        if (code == kExitDone)
            note("ended by a signal; what was done is kept");
        ::raise(EndWatch::signal());
    }
    return code;
}

} // namespace

void addShellCommand(Commands commands) {
    auto script = std::make_shared<std::string>();
    CLI::App* command = commands.app.add_subcommand(
        "shell", "A live session: viewers, clients, roles, playing, batches, cutting");
    command->add_option("script", *script, "A file with one verb a line (default: standard input)")
        ->type_name("SCRIPT");
    command->add_flag("--repeatable", commands.options.repeatable,
                      "Fixed ids, and a clock that only `wait` moves: the same output every time");
    command->footer("Each client prints what it is told, in the order of the telling.\n\n"
                    "  open \"Reel 1\" as record\n  client timeline priority 10\n"
                    "  client viewer priority 5\n  time 12.5\n  mark in 2\n  undo\n\n"
                    "`help` tells all verbs.");
    command->callback([commands, script] {
        commands.action = [&options = commands.options, script] { return run(options, *script); };
    });
}

} // namespace cutroom::cli
