// The platform that we ship, put together: loop, transport and headless services, installed for the
// life of one object, and the project that is open in it.
#pragma once

#include "platform/base/IdSource.h"
#include "platform/base/Log.h"
#include "platform/base/Status.h"
#include "platform/embedded/EmbeddedDebugCommands.h"
#include "platform/embedded/EmbeddedFocus.h"
#include "platform/embedded/EmbeddedLoop.h"
#include "platform/embedded/EmbeddedMessages.h"
#include "platform/embedded/EmbeddedRedraw.h"
#include "platform/embedded/EnglishTexts.h"
#include "platform/embedded/LoopClock.h"
#include "platform/embedded/Transport.h"
#include "platform/host/Host.h"
#include "platform/project/CurrentProject.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cutroom {

// What a platform may be given instead of its own; what is given outlives it.
struct EmbeddedOptions {
    iLoopClock* clock = nullptr; // null: real time
    iIdSource* ids = nullptr;    // null: the system's
    iLogSink* log = nullptr;     // null: standard error
    // Configuration values by key, set before anything reads one.
    std::vector<std::pair<std::string, std::string>> configuration;
};

// Installs the host when made and takes it out when it goes, closing the project first. One at a
// time; user-interface thread only.
class CUTROOM_API EmbeddedPlatform {
public:
    explicit EmbeddedPlatform(const EmbeddedOptions& options = {});
    ~EmbeddedPlatform();
    EmbeddedPlatform(const EmbeddedPlatform&) = delete;
    EmbeddedPlatform& operator=(const EmbeddedPlatform&) = delete;

    // Opens the project in `folder`: see `CurrentProject::open`. The user's preferences and the
    // configuration beside the project ("preferences.ini", "configuration.ini" in the folder) are
    // read too.
    Status openProject(const std::string& folder, CurrentProject::Access access,
                       CurrentProject::IfMissing ifMissing);
    // Stops the transport, tells the project's exit (viewed edits close and keep their state),
    // writes what is dirty and closes. The first failure is given; the project is closed all the
    // same. All well without a project.
    Status closeProject();

    EmbeddedLoop& loop() noexcept { return loop_; }
    Transport& transport() noexcept { return transport_; }
    EmbeddedMessages& messages() noexcept { return messages_; }
    EmbeddedFocus& focus() noexcept { return focus_; }

private:
    HostServices services(const EmbeddedOptions& options);

    SystemClock systemClock_;
    EmbeddedLoop loop_;
    Transport transport_;
    EmbeddedFocus focus_;
    EmbeddedMessages messages_;
    EnglishTexts texts_;
    EmbeddedDebugCommands debugCommands_;
    EmbeddedRedraw redraw_;
    std::optional<ScopedHost> host_;
};

} // namespace cutroom
