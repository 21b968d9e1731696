// Any bytes as the lines of a session, on a small project in memory or, with an odd number of
// bytes, on none: each is done or refused, every edit that is viewed stays sound, nothing is left
// viewed at the end, and the project opened again has the same edits. Lines that name a path or let
// the loop run for long are passed over; files in the current folder go with it. Mutations are of
// lines and words, for most bytes make no verb.
#include "cli/Session.h"
#include "fuzz/Require.h"
#include "platform/base/Log.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>

namespace {

using namespace cutroom;

constexpr std::size_t kMostLines = 200;
constexpr std::string_view kWords[] = {
    "V1",    "V2",    "A1",    "A4",     "all",      "now",    "start",  "end",
    "none",  "on",    "off",   "-1",     "0",        "1",      "3",      "40",
    "1e9",   "1e308", "-1e99", "nan",    "12f",      "65535",  "in",     "out",
    "as",    "film",  "new",   "record", "play",     "source", "client", "open",
    "close", "use",   "video", "a",      "film.srt", "\"\"",   "[]",     "01:00:00:00"};
constexpr std::size_t kLongestWait = 10; // characters of a line

class NoLog final : public iLogSink {
public:
    NoLog() : former_(installLogSink(this)) {}
    ~NoLog() override { installLogSink(former_); }
    void write(std::string_view) override {}

private:
    iLogSink* former_;
};

bool mayRun(std::string_view line) {
    return line.find('/') == line.npos &&
           (line.find("wait") == line.npos || line.size() <= kLongestWait);
}

void checkEdits(const cli::Session& session) {
    for (const auto& [name, vob] : session.viewers())
        if (const EditPtr edit = vob->getEdit(); edit && !edit->checkConsistency().empty()) {
            std::fprintf(stderr, "%s\n", edit->checkConsistency().c_str());
            __builtin_trap();
        }
}

void runAll(cli::Session& session, const std::string& text) {
    std::size_t count = 0;
    for (const std::string& line : split(text, '\n')) {
        if (session.ended() || ++count > kMostLines)
            return;
        if (!mayRun(line))
            continue;
        const Status done = session.run(line);
        require(done || !done.text().empty());
        checkEdits(session);
    }
}

// What each edit of the project holds, by its cookie.
using Contents = std::map<std::string, std::string>;

Contents contentsOfAll() {
    Contents all;
    for (const Cookie& cookie : EditManager::instance().getAllEdits())
        if (const EditPtr edit(cookie); edit)
            all[cookie.asString()] = edit->canonicalContents();
    return all;
}

// Gives what is left of the edits when all viewers have gone.
Contents runSession(const cli::Options& options, bool stored, const std::string& lines) {
    cli::Workspace workspace(options);
    require(!stored || workspace.open(cli::Workspace::Use::writeOrCreate).ok());
    {
        cli::Session session(workspace);
        runAll(session, stored ? "make film video 2 audio 4 length 40 rate 25\nopen film as film\n"
                               : "open new as film\nadd-channel video\nadd-channel audio\n");
        runAll(session, lines);
    }
    const Contents left = contentsOfAll();
    require(workspace.close().ok());
    // without a project they go with the host
    require(!stored || VobManager::instance().getAllVobs().empty());
    return left;
}

Contents contentsOnDisk(const cli::Options& options) {
    cli::Workspace workspace(options);
    require(workspace.open(cli::Workspace::Use::read).ok());
    return contentsOfAll();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) ? 0 : 1;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

// Moves, repeats or takes out a line, or puts another word in the place of one.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
    std::minstd_rand random(seed);
    const auto below = [&](std::size_t count) {
        return random() % std::max<std::size_t>(1, count);
    };
    if (below(8) == 0)
        return LLVMFuzzerMutate(data, size, most);
    auto lines = split(std::string(reinterpret_cast<const char*>(data), size), '\n');
    const std::size_t at = below(lines.size());
    const std::string other = lines[below(lines.size())];
    if (const auto what = below(6); what == 0) {
        lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), other);
    } else if (what == 1) {
        lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(at));
    } else {
        auto words = split(lines[at], ' ');
        const auto others = split(other, ' ');
        words[below(words.size() + 1) % words.size()] =
            below(2) ? others[below(others.size())] : std::string(kWords[below(std::size(kWords))]);
        lines[at] = join(words, " ");
    }
    const std::string text = join(lines, "\n").substr(0, most);
    std::copy(text.begin(), text.end(), data);
    return text.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const NoLog quiet;
    const test::TempFolder folder(test::TempFolder::inMemory());
    const auto outside = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    cli::Options options;
    options.project = folder / "film";
    options.repeatable = true;
    const bool stored = size % 2 == 0;
    const std::string lines(reinterpret_cast<const char*>(data), size);
    const Contents left = runSession(options, stored, lines);
    require(!stored || !isPlain(lines) || contentsOnDisk(options) == left);
    std::filesystem::current_path(outside);
    return 0;
}
