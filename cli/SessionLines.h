// `SessionLines`: the lines that a session is given, by a script or a person.
#pragma once

#include <cstddef>
#include <string>

namespace cutroom::cli {

// The lines of a script, which may be a pipe or a device, or of the standard input. While an
// `EndWatch` lives, a signal ends the waiting for a line.
class SessionLines {
public:
    // `script` empty: the standard input.
    explicit SessionLines(const std::string& script);
    ~SessionLines();
    SessionLines(const SessionLines&) = delete;
    SessionLines& operator=(const SessionLines&) = delete;

    bool opened() const noexcept { return input_ >= 0; }
    // Somebody may type them.
    bool fromTerminal() const noexcept;
    // True when there is no next line because the last could not be read.
    bool failed() const noexcept { return failed_; }
    // The next line, without its end; false when there is none. What a signal cut short is no line.
    bool take(std::string& line);

private:
    bool fill();

    int input_;
    std::string held_; // what was read, taken up to `next_`
    std::size_t next_ = 0;
    bool ended_ = false;
    bool failed_ = false;
};

} // namespace cutroom::cli
