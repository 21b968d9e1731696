// A process of its own that works on a project until it is killed, and tells what it saved.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace cutroom::test {

// The other process, as its starter sees it. Killed when it goes.
//
// It writes lines: "ready"; "try <state>" before each thing that it saves, "done" after it; "failed
// <reason>" and its end.
class WriterProcess {
public:
    // Starts this program anew. `work` is "edits", "bins", "documents" or "groups" (random work
    // on them for ever) or "hold" (opens the project for writing and waits) or "import" (takes in
    // "timeline.otio" beside the project's folder and ends; it writes "at <hundredths>" and, once
    // it is in, "done").
    WriterProcess(const std::string& work, const std::string& folder, unsigned seed);
    ~WriterProcess();
    WriterProcess(const WriterProcess&) = delete;
    WriterProcess& operator=(const WriterProcess&) = delete;

    // Takes in what it writes until there are so many lines, it ends, or the time is over.
    void read(std::size_t lines, std::chrono::microseconds most);
    // Kill -9, and what it had written by then.
    void kill();
    const std::vector<std::string>& lines() const { return lines_; }

private:
    pid_t process_ = -1;
    int pipe_ = -1;
    std::string rest_; // a line that has not ended
    std::vector<std::string> lines_;
};

} // namespace cutroom::test
