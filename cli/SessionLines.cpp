#include "cli/SessionLines.h"

#include "cli/EndWatch.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace cutroom::cli {

SessionLines::SessionLines(const std::string& script)
    : input_(script.empty() ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                            : ::open(script.c_str(), O_RDONLY | O_CLOEXEC)) {}

SessionLines::~SessionLines() {
    if (opened())
        ::close(input_);
}

bool SessionLines::fromTerminal() const noexcept { return ::isatty(input_); }

bool SessionLines::take(std::string& line) {
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

bool SessionLines::fill() {
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

} // namespace cutroom::cli
