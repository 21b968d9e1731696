#include "tests/crash/Writer.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace cutroom::test {

WriterProcess::WriterProcess(const std::string& work, const std::string& folder, unsigned seed) {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0)
        return;
    const std::string number = std::to_string(seed);
    process_ = fork();
    if (process_ == 0) {
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        execl("/proc/self/exe", "writer", "--writer", work.c_str(), folder.c_str(), number.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    pipe_ = ends[0];
}

WriterProcess::~WriterProcess() {
    kill();
    close(pipe_);
}

void WriterProcess::read(std::size_t lines, std::chrono::microseconds most) {
    const auto until = std::chrono::steady_clock::now() + most;
    while (lines_.size() < lines) {
        const auto left = std::max<std::chrono::nanoseconds>(
            until - std::chrono::steady_clock::now(), std::chrono::nanoseconds(0));
        const timespec wait{left.count() / 1'000'000'000, left.count() % 1'000'000'000};
        pollfd waiting{pipe_, POLLIN, 0};
        if (ppoll(&waiting, 1, &wait, nullptr) <= 0)
            return;
        char buffer[65536];
        const ssize_t size = ::read(pipe_, buffer, sizeof buffer);
        if (size <= 0)
            return;
        rest_.append(buffer, static_cast<std::size_t>(size));
        for (std::size_t end = 0; (end = rest_.find('\n')) != std::string::npos;) {
            lines_.push_back(rest_.substr(0, end));
            rest_.erase(0, end + 1);
        }
    }
}

void WriterProcess::kill() {
    if (process_ < 0)
        return;
    ::kill(process_, SIGKILL);
    EXPECT_EQ(waitpid(process_, nullptr, 0), process_);
    process_ = -1;
    read(~std::size_t{0}, std::chrono::seconds(10));
}

} // namespace cutroom::test
