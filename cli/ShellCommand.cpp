// cutroom shell [SCRIPT]
#include "cli/Command.h"
#include "cli/Session.h"
#include "platform/base/Log.h"

#include <CLI/CLI.hpp>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
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
        wake_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        struct sigaction action {};
        action.sa_handler = &note;
        action.sa_flags = SA_RESTART; // or it would cut short what is being written
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            ::sigaction(kSignals[i], nullptr, &before_[i]);
            if (before_[i].sa_handler != SIG_IGN) // a background job, or nohup: it stays so
                ::sigaction(kSignals[i], &action, nullptr);
        }
    }
    ~EndWatch() {
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            ::sigaction(kSignals[i], &before_[i], nullptr);
        if (ready())
            ::close(wake_.exchange(-1));
    }
    EndWatch(const EndWatch&) = delete;
    EndWatch& operator=(const EndWatch&) = delete;

    // False when the system gave it nothing to wait with.
    static bool ready() noexcept { return wake_ >= 0; }
    // The signal that came; 0 when none did.
    static int signal() noexcept { return signal_; }
    // Waits until `input` can be read or a signal came: false then. Whichever thread the signal
    // went to, and however shortly before the waiting.
    static bool awaits(int input) noexcept {
        std::array<pollfd, 2> both{{{input, POLLIN, 0}, {wake_, POLLIN, 0}}};
        while (signal() == 0 && ::poll(both.data(), both.size(), -1) < 0 && errno == EINTR)
            ;
        return signal() == 0;
    }

private:
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
    static void note(int signal) {
        const int error = errno;
        signal_ = signal;
        const int count = ++count_;
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t told = ::write(wake_, &one, sizeof one); // there is room
        if (count >= 3) {
            ::signal(signal, SIG_DFL);
            ::raise(signal);
        }
        errno = error;
    }

    static_assert(std::atomic<int>::is_always_lock_free, "set by a signal handler");
    static inline std::atomic<int> signal_ = 0;
    static inline std::atomic<int> count_ = 0;
    static inline std::atomic<int> wake_ = -1; // can be read from the first signal on
    std::array<struct sigaction, kSignals.size()> before_{};
};

// The lines of a script, which may be a pipe or a device, or of the standard input.
class Lines {
public:
    explicit Lines(const std::string& script)
        : input_(script.empty() ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                : ::open(script.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~Lines() {
        if (opened())
            ::close(input_);
    }
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    bool opened() const noexcept { return input_ >= 0; }
    // True when there is no next line because the last could not be read.
    bool failed() const noexcept { return failed_; }
    // The next line, without its end. A signal ends the waiting for it, and what it cut short is no
    // line.
    bool take(std::string& line) {
        line.clear();
        do {
            const std::size_t end = held_.find('\n', next_);
            line.append(held_, next_, end - next_);
            next_ = end == held_.npos ? held_.size() : end + 1;
            if (end != held_.npos)
                return EndWatch::signal() == 0;
        } while (fill());
        return !line.empty() && !failed_ && EndWatch::signal() == 0;
    }

private:
    bool fill() {
        constexpr std::size_t kAtOnce = std::size_t{1} << 16;
        ssize_t got = ended_ ? 0 : -1;
        held_.resize(kAtOnce);
        while (got < 0 && !failed_ && EndWatch::awaits(input_)) {
            got = ::read(input_, held_.data(), held_.size());
            failed_ = got < 0 && errno != EINTR && errno != EAGAIN;
        }
        ended_ = got <= 0;
        held_.resize(ended_ ? 0 : static_cast<std::size_t>(got));
        next_ = 0;
        return !ended_;
    }

    int input_;
    std::string held_; // what was read, taken up to `next_`
    std::size_t next_ = 0;
    bool ended_ = false;
    bool failed_ = false;
};

struct Source {
    Lines& lines;
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
Status runLines(Workspace& workspace, const Options& options, const Source& source) {
    const SessionLog log;
    Session session(workspace);
    const Kv::Ptr<Guard> waits = endWaiting(workspace.host().loop(), options);
    std::string line;
    for (long number = 1; !session.ended() && !outputFailed(); ++number) {
        if (source.interactive)
            print("cutroom> ");
        if (!source.lines.take(line))
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
    return source.lines.failed() ? Status(StatusCode::inputOutput, source.name, "cannot be read")
                                 : Status();
}

int run(const Options& options, const std::string& script) {
    const std::string name = script.empty() ? "standard input" : script;
    Lines lines(script);
    if (!lines.opened())
        return fail({StatusCode::notFound, name, "cannot be opened"});
    std::optional<EndWatch> watch(std::in_place);
    if (!EndWatch::ready())
        return fail({StatusCode::inputOutput, name, "cannot be waited for"});
    const int code = withProject(options, Workspace::Use::writeOrCreate, [&](Workspace& workspace) {
        const bool interactive = script.empty() && ::isatty(STDIN_FILENO);
        return runLines(workspace, options, {lines, name, interactive});
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
