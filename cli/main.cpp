// The `cutroom` command.
#include "cli/Command.h"
#include "cli/Completion.h"
#include "cli/ManualPage.h"
#include "platform/base/Strings.h"
#include "platform/base/Version.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <new>
#include <optional>
#include <sstream>
#include <string_view>
#include <vector>

namespace {

using cutroom::cli::Commands;
using cutroom::cli::oneLine;

constexpr const char* kAbout =
    "Works on real timelines without an editor: takes OTIO and EDL files into a project,\n"
    "shows and changes them live, and gets results out.";

constexpr const char* kExamples =
    "Examples:\n"
    "  cutroom import reel1.otio reel2.edl     take timelines into ./cutroom.project\n"
    "  cutroom list                            what the project holds\n"
    "  cutroom show \"Reel 1\"                   the timeline, drawn\n"
    "  cutroom show \"Reel 1\" --json            the same for programs\n"
    "  cutroom markers \"Reel 1\" add --at 01:00:10:00 --name \"Fix sky\" --colour red\n"
    "  cutroom undo \"Reel 1\"                   take the last change back\n"
    "  cutroom bin new Dailies \"Reel 1\"        put edits and documents into bins\n"
    "  cutroom export \"Reel 1\" --format srt -o reel1.srt\n"
    "  cutroom shell                           a live session; `help` tells its words\n"
    "\n"
    "An edit is named by its name or its cookie. `cutroom COMMAND --help` tells more.\n"
    "Exit codes: 0 done, 1 failed, 2 wrong usage, 3 not found, 4 damaged input, 5 input/output.";

void addAll(Commands commands) {
    addImportCommand(commands);
    addListCommand(commands);
    addShowCommand(commands);
    addExportCommand(commands);
    addMarksCommand(commands);
    addMarkersCommand(commands);
    addMixCommand(commands);
    addCopyCommand(commands);
    addFlattenCommand(commands);
    addCuesCommand(commands);
    addSyncCommand(commands);
    addRenameCommand(commands);
    addDeleteCommand(commands);
    addHistoryCommands(commands);
    addBinCommand(commands);
    addGroupCommand(commands);
    addDocumentCommand(commands);
    addFilterCommand(commands);
    addSearchCommand(commands);
    addShellCommand(commands);
    addCheckCommand(commands);
}

// The words of the innermost command that was named, each with a blank behind it.
std::string commandWords(const CLI::App& app) {
    const auto named = app.get_subcommands();
    return named.empty() ? std::string()
                         : named.front()->get_name() + ' ' + commandWords(*named.front());
}

const CLI::App& innermost(const CLI::App& app) {
    const auto named = app.get_subcommands();
    return named.empty() ? app : innermost(*named.front());
}

// What is wrong with the words that were given. For a word that it does not know the parser may
// only say that another one is missing.
std::string wrongWords(const CLI::App& app, const CLI::ParseError& wrong) {
    const auto unknown = app.remaining(true);
    const bool wantsCommand = innermost(app).get_require_subcommand_min() > 0;
    if (!unknown.empty())
        return unknown.front() + (unknown.front().starts_with('-') ? ": no such option"
                                  : wantsCommand                   ? ": no such command"
                                                                   : ": one word too many");
    return wantsCommand && wrong.get_name() == "RequiredError" ? "say what to do" : wrong.what();
}

int sayWrongUsage(const CLI::App& app, const CLI::ParseError& wrong) {
    std::fprintf(stderr, "cutroom: %s; `cutroom %s--help` shows how\n",
                 oneLine(wrongWords(app, wrong)).c_str(), commandWords(app).c_str());
    return cutroom::cli::kExitUsage;
}

// What only other programs ask for: the shells' completion, and the making of the manual page.
std::optional<int> answerPrograms(const CLI::App& app, const std::vector<std::string>& words) {
    if (words.empty() || (words.front() != "__complete" && words.front() != "__manual"))
        return std::nullopt;
    cutroom::cli::print(words.front() == "__manual"
                            ? cutroom::cli::manualCommands(app)
                            : cutroom::cli::completion(app, {words.begin() + 1, words.end()}));
    return cutroom::cli::outputFailed() ? cutroom::cli::kExitInputOutput : cutroom::cli::kExitDone;
}

int parseAndRun(int argc, char** argv) {
    cutroom::cli::Options options;
    std::function<int()> action;
    CLI::App app(kAbout, "cutroom");
    app.footer(kExamples);
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", std::string("cutroom ") + cutroom::version());
    app.add_option("-p,--project", options.project,
                   "The project folder (default: the one that holds the current folder, else "
                   "./cutroom.project)")
        ->check(cutroom::cli::refuseEmpty)
        ->type_name("FOLDER");
    app.add_flag("--json", options.json, "Answer in JSON");
    addAll({app, options, action});
    if (const auto answered = answerPrograms(app, {argv + 1, argv + argc}))
        return *answered;
    for (int i = 1; i < argc; ++i)
        if (!cutroom::isUtf8(argv[i]))
            return cutroom::cli::fail({cutroom::StatusCode::wrongUsage, argv[i], "not UTF-8 text"});
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        std::ostringstream answer;
        const int code = app.exit(asked, answer);
        cutroom::cli::print(answer.str());
        return cutroom::cli::outputFailed() ? cutroom::cli::kExitInputOutput : code;
    } catch (const CLI::ParseError& wrong) {
        return sayWrongUsage(app, wrong);
    }
    return action();
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error like a full disk
    const cutroom::cli::WarningLog warnings;
    try {
        return parseAndRun(argc, argv);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "cutroom: out of memory\n");
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "cutroom: %s\n", failure.what());
    }
    return cutroom::cli::kExitFailed;
}
