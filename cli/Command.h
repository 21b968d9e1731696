// What every command of the program is made of: its words, declared to the parser, and an action
// that runs once the words are known to be right.
#pragma once

#include "cli/Workspace.h"
#include "platform/base/Log.h"
#include "platform/base/Status.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace cutroom::cli {

// The exit codes of the program.
enum ExitCode : int {
    kExitDone = 0,
    kExitFailed = 1,
    kExitUsage = 2,
    kExitNotFound = 3,
    kExitDamaged = 4,
    kExitInputOutput = 5,
};

// Where a command declares itself and leaves its action.
struct Commands {
    CLI::App& app;
    Options& options;
    std::function<int()>& action;
};

void addImportCommand(Commands commands);
void addListCommand(Commands commands);
void addShowCommand(Commands commands);
void addExportCommand(Commands commands);
void addMarksCommand(Commands commands);
void addMarkersCommand(Commands commands);
void addMixCommand(Commands commands);
void addCopyCommand(Commands commands);
void addFlattenCommand(Commands commands);
void addCuesCommand(Commands commands);
void addSyncCommand(Commands commands);
void addRenameCommand(Commands commands);
void addDeleteCommand(Commands commands);
void addHistoryCommands(Commands commands);
void addBinCommand(Commands commands);
void addGroupCommand(Commands commands);
void addDocumentCommand(Commands commands);
void addFilterCommand(Commands commands);
void addSearchCommand(Commands commands);
void addCheckCommand(Commands commands);
// "rename" and "delete" below a command for assets of some kinds (AssetKinds), of the value type
// `type`. Their help ends as the parent's does by then.
void addNamingCommands(Commands commands, CLI::App& parent, const char* type, unsigned kinds);
void addShellCommand(Commands commands);

// A check for values of options: names of files, folders and bins are not empty. An empty one, as a
// script's unset variable gives, must not stand for what is meant without the option.
std::string refuseEmpty(const std::string& name);

int exitCodeOf(StatusCode code);
// Reports a failure on standard error, one line ("cutroom: <thing>: <reason>"); gives its code.
int fail(const Status& status);
// Writes a line that is not a failure to standard error.
void note(std::string_view text);
// Writes data to standard output. When that is full or closed, this is reported once and later
// output is dropped; the command still does all its work, then ends with exit code 5. Any thread.
void print(std::string_view text);
bool outputFailed();
// As one line of text: control characters, which names of clips and files may hold, become blanks,
// so that none moves the cursor of a terminal or breaks a table.
enum class Tabs { drop, keep };
std::string oneLine(std::string_view text, Tabs tabs = Tabs::drop);

// Writes what the library logs to standard error, one line a message ("warning: ...").
class WarningLog final : public iLogSink {
public:
    WarningLog();
    ~WarningLog() override;
    void write(std::string_view message) override;
    // Messages since the program began.
    static std::size_t count() noexcept;

private:
    iLogSink* former_;
};

// Terminals: whether standard output is one that takes colour, and its width in columns (80 when it
// is not a terminal).
bool colourWanted();
int terminalWidth();

// Opens the project, runs `body` in it, closes it; reports the first failure, gives its exit code.
int withProject(const Options& options, Workspace::Use use,
                const std::function<Status(Workspace&)>& body);

// Makes `body`, run with the project open, the action of a command.
void runsWithProject(Commands commands, CLI::App* command, Workspace::Use use,
                     std::function<Status(const Options&)> body);

} // namespace cutroom::cli
