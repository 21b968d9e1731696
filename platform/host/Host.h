// The program around the library: one interface per service, installed once as a set.
//
// Without an installed host, or where a set leaves a service out, every service answers
// harmlessly: time and ids come from the system, messages go to the log, texts show their number,
// nothing plays, nobody holds the focus. Installing and uninstalling happen on one thread, while no
// other thread uses the library.
#pragma once

#include "platform/base/Export.h"

namespace cutroom {

class iClock;
class iConsoleFocus;
class iDebugCommands;
class iEventLoop;
class iFileSystem;
class iIdSource;
class iLogSink;
class iPlayServer;
class iRedraw;
class iStringTable;
class iTransitStatusManager;
class iUserMessages;

// A set of services; null leaves one out. Whoever installs it keeps the services alive until after
// `Host::uninstall`.
struct CUTROOM_API HostServices {
    iEventLoop* loop = nullptr;
    iClock* clock = nullptr;
    iIdSource* ids = nullptr;
    iLogSink* log = nullptr;
    iTransitStatusManager* transit = nullptr;
    iPlayServer* playServer = nullptr;
    iConsoleFocus* focus = nullptr;
    iUserMessages* messages = nullptr;
    iStringTable* strings = nullptr;
    iDebugCommands* debugCommands = nullptr;
    iRedraw* redraw = nullptr;
    iFileSystem* files = nullptr;
};

class CUTROOM_API Host {
public:
    // Begins a life: ends what was made while no host was installed, then puts the services in
    // force. Loop, ids, log and files are also installed where the lower layers look for them
    // (`uiThread`, `eventQueue`, `idSource`, `installLogSink`, `installedFileSystem`); one left out
    // leaves what is installed there. Only one set at a time (asserted).
    static void install(const HostServices& services);
    // Ends the life: runs what is posted, destroys what was made in the life, the latest first,
    // runs what that posted, all while the services still answer; then takes them out of force.
    // Without a host it does nothing. User-interface thread.
    static void uninstall() noexcept;
    static bool installed() noexcept;

    // The services in force, each always there. Any thread; how a service may be called is its own
    // header's matter.
    static iEventLoop& loop() noexcept;
    static iClock& clock() noexcept;
    static iTransitStatusManager& transit() noexcept;
    static iPlayServer& playServer() noexcept;
    static iConsoleFocus& focus() noexcept;
    static iUserMessages& messages() noexcept;
    static iStringTable& strings() noexcept;
    static iDebugCommands& debugCommands() noexcept;
    static iRedraw& redraw() noexcept;
};

// Installs a set for its own lifetime.
class CUTROOM_API ScopedHost {
public:
    explicit ScopedHost(const HostServices& services) { Host::install(services); }
    ~ScopedHost() { Host::uninstall(); }
    ScopedHost(const ScopedHost&) = delete;
    ScopedHost& operator=(const ScopedHost&) = delete;
};

} // namespace cutroom
