// Opening a project folder on the platform that we ship, and closing it without losing anything.
#pragma once

#include "platform/base/Guard.h"
#include "platform/base/Status.h"
#include "platform/embedded/Autosave.h"
#include "platform/embedded/EmbeddedHost.h"
#include "platform/project/CurrentProject.h"

#include <optional>
#include <string>

namespace cutroom {

// The project of one host; closes it when it goes. User-interface thread only. Made before whatever
// else listens for projects, so that those find the settings of a project read when they are told
// that it was entered.
class CUTROOM_API EmbeddedProject {
public:
    // `host` outlives the project.
    explicit EmbeddedProject(EmbeddedHost& host);
    // On a host of the program's own: `loop`, the one installed, outlives the project. A transport
    // of its own the program stops before it closes the project.
    explicit EmbeddedProject(iEventLoop& loop);
    // Closes; a failure is logged.
    ~EmbeddedProject();
    EmbeddedProject(const EmbeddedProject&) = delete;
    EmbeddedProject& operator=(const EmbeddedProject&) = delete;

    // Opens the project in `folder`: see `CurrentProject::open`. The configuration and the user's
    // preferences beside it ("configuration.ini", "preferences.ini" in the folder) are read too.
    // While the loop runs, what changes in a project open for writing is saved (Autosave).
    Status open(const std::string& folder, CurrentProject::Access access,
                CurrentProject::IfMissing ifMissing);
    // Stops the transport, tells the project's exit (viewed edits close and leave how they were
    // viewed with their edits, containers are saved), writes what is dirty, and closes. Gives the
    // first failure, also of what could not be saved at the exit (`Savers`); the project is closed
    // all the same. All well without a project. Called again while the project is being closed it
    // does nothing.
    Status close();

private:
    void readSettings();

    iEventLoop& loop_;
    Transport* transport_ = nullptr; // stopped before the close
    Kv::Ptr<Guard> entered_;
    Status settings_; // of the project entered last
    std::optional<Autosave> autosave_;
    bool closing_ = false;
};

} // namespace cutroom
