// `EndWatch`: remembers the signals that ask the program to end, so that it ends where nothing is
// lost.
#pragma once

namespace cutroom::cli {

// While it lives, Ctrl-C, a closed terminal and a request to end are remembered: the session ends
// after its line and keeps what was done. The third one ends the program at once. One at a time.
class EndWatch {
public:
    EndWatch();
    ~EndWatch();
    EndWatch(const EndWatch&) = delete;
    EndWatch& operator=(const EndWatch&) = delete;

    // False when the system gave it nothing to wait with.
    static bool ready() noexcept;
    // The signal that came, also after the watch has gone; 0 when none did.
    static int signal() noexcept;
    // Waits until `input`, a descriptor, can be read or a signal came: false then. Whichever thread
    // the signal went to, and however shortly before the waiting.
    static bool awaits(int input) noexcept;
};

} // namespace cutroom::cli
