#include "cli/Command.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/ioctl.h>
#include <unistd.h>

namespace cutroom::cli {

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
    std::string line = status.text();
    std::replace(line.begin(), line.end(), '\n', ' ');
    std::fprintf(stderr, "cutroom: %s\n", line.c_str());
    return exitCodeOf(status.code());
}

void note(std::string_view text) {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
}

void print(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        std::fprintf(stderr, "cutroom: standard output: cannot be written\n");
        std::exit(kExitInputOutput);
    }
}

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
    return closed.ok() ? kExitDone : fail(closed);
}

} // namespace cutroom::cli
