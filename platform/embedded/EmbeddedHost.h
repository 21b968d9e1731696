// The host that we ship: every service, without a screen, made and installed in one go.
#pragma once

#include "platform/embedded/EmbeddedDebugCommands.h"
#include "platform/embedded/EmbeddedFocus.h"
#include "platform/embedded/EmbeddedLoop.h"
#include "platform/embedded/EmbeddedMessages.h"
#include "platform/embedded/EmbeddedRedraw.h"
#include "platform/embedded/EnglishTexts.h"
#include "platform/embedded/FixedIds.h"
#include "platform/embedded/LoopClock.h"
#include "platform/embedded/Transport.h"
#include "platform/host/Host.h"

namespace cutroom {

// Installs itself for its own lifetime: a process lives as long as its host. Used on
// the user-interface thread; the one that destroys it becomes that thread. One at a time.
class CUTROOM_API EmbeddedHost {
public:
    enum class Time {
        real,
        manual // the clock moves only when told to, or by a running loop
    };
    enum class Ids {
        unique,
        fixed // the same in every run, with a fixed time of day
    };
    struct Options {
        Time time = Time::real;
        Ids ids = Ids::unique;
        // Taken over as they are; null leaves what is installed. They outlive the host.
        iLogSink* log = nullptr;
        iFileSystem* files = nullptr;
    };
    // Everything the same in every run: for tests and session scripts.
    static Options repeatable() { return {Time::manual, Ids::fixed, nullptr, nullptr}; }

    EmbeddedHost() : EmbeddedHost(Options()) {}
    explicit EmbeddedHost(const Options& options);
    // Stops the transport, lets the loop hand over what waits, and ends the life.
    ~EmbeddedHost();
    EmbeddedHost(const EmbeddedHost&) = delete;
    EmbeddedHost& operator=(const EmbeddedHost&) = delete;

    EmbeddedLoop& loop() noexcept { return loop_; }
    Transport& transport() noexcept { return transport_; }
    EmbeddedMessages& messages() noexcept { return messages_; }
    EmbeddedFocus& focus() noexcept { return focus_; }
    EmbeddedDebugCommands& debugCommands() noexcept { return debugCommands_; }
    EmbeddedRedraw& redraw() noexcept { return redraw_; }
    // The clock of `Time::manual`; it stands still and unused with `Time::real`.
    ManualClock& manualClock() noexcept { return manualClock_; }

private:
    HostServices services(const Options& options) noexcept;

    SystemClock systemClock_;
    ManualClock manualClock_;
    FixedIds fixedIds_;
    EnglishTexts texts_;
    EmbeddedMessages messages_;
    EmbeddedFocus focus_;
    EmbeddedDebugCommands debugCommands_;
    EmbeddedRedraw redraw_;
    EmbeddedLoop loop_;
    Transport transport_;
};

} // namespace cutroom
