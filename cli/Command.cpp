#include "cli/Command.h"

#include <CLI/CLI.hpp>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

namespace cutroom::cli {

namespace {

std::atomic<bool> outputFailed_{false};
std::atomic<std::size_t> warnings_{0};

} // namespace

std::string refuseEmpty(const std::string& name) {
    return name.empty() ? "a name is not empty" : "";
}

int exitCodeOf(StatusCode code) {
    switch (code) {
    case StatusCode::ok:
        return kExitDone;
    case StatusCode::wrongUsage:
        return kExitUsage;
    case StatusCode::notFound:
        return kExitNotFound;
    case StatusCode::damaged:
        return kExitDamaged;
    case StatusCode::inputOutput:
        return kExitInputOutput;
    case StatusCode::failed:
    case StatusCode::locked:
        break;
    }
    return kExitFailed;
}

int fail(const Status& status) {
    std::fprintf(stderr, "cutroom: %s\n", oneLine(status.text()).c_str());
    return exitCodeOf(status.code());
}

void note(std::string_view text) { std::fprintf(stderr, "%s\n", oneLine(text).c_str()); }

void print(std::string_view text) {
    if (outputFailed_)
        return;
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return;
    if (!outputFailed_.exchange(true))
        std::fprintf(stderr, "cutroom: standard output: cannot be written\n");
}

bool outputFailed() { return outputFailed_; }

std::string oneLine(std::string_view text, Tabs tabs) {
    std::string line(text);
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto byte = static_cast<unsigned char>(line[i]);
        const auto next = static_cast<unsigned char>(i + 1 < line.size() ? line[i + 1] : '\0');
        if (byte == 0xc2 && next >= 0x80 && next < 0xa0) // U+0080 to U+009F
            line.replace(i, 2, " ");
        else if ((byte < ' ' && (byte != '\t' || tabs == Tabs::drop)) || byte == 0x7f)
            line[i] = ' ';
    }
    return line;
}

WarningLog::WarningLog() : former_(installLogSink(this)) {}

WarningLog::~WarningLog() { installLogSink(former_); }

void WarningLog::write(std::string_view message) {
    ++warnings_;
    while (message.ends_with('\n'))
        message.remove_suffix(1);
    std::fprintf(stderr, "warning: %s\n", oneLine(message).c_str());
}

std::size_t WarningLog::count() noexcept { return warnings_; }

bool colourWanted() {
    const char* noColour = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return ::isatty(STDOUT_FILENO) && (!noColour || !*noColour) &&
           !(terminal && std::strcmp(terminal, "dumb") == 0);
}

int terminalWidth() {
    constexpr int kDefault = 80;
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return kDefault;
}

int withProject(const Options& options, Workspace::Use use,
                const std::function<Status(Workspace&)>& body) {
    Workspace workspace(options);
    if (const Status opened = workspace.open(use); !opened)
        return fail(opened);
    const Status done = body(workspace);
    const Status closed = workspace.close();
    if (!done)
        return fail(done);
    if (!closed)
        return fail(closed);
    return outputFailed() ? kExitInputOutput : kExitDone;
}

void runsWithProject(Commands commands, CLI::App* command, Workspace::Use use,
                     std::function<Status(const Options&)> body) {
    command->callback([commands, use, body = std::move(body)] {
        commands.action = [&options = commands.options, use, body] {
            return withProject(options, use, [&](Workspace&) { return body(options); });
        };
    });
}

} // namespace cutroom::cli
