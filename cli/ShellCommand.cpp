// cutroom shell [SCRIPT]
#include "cli/Command.h"
#include "cli/Session.h"
#include "platform/base/Log.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>

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

struct Source {
    std::istream& lines;
    std::string name;
    bool interactive = false;
};

// A script ends at its first failure; a person is told and goes on. Both end when nobody can read
// what is printed.
Status runLines(Workspace& workspace, Source source) {
    const SessionLog log;
    Session session(workspace);
    std::string line;
    for (long number = 1; !session.ended() && !outputFailed(); ++number) {
        if (source.interactive)
            print("cutroom> ");
        if (!std::getline(source.lines, line))
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
    return withProject(options, Workspace::Use::writeOrCreate, [&](Workspace& workspace) {
        const bool interactive = script.empty() && ::isatty(STDIN_FILENO);
        return runLines(workspace, {script.empty() ? std::cin : file,
                                    script.empty() ? "standard input" : script, interactive});
    });
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
