#include "platform/host/Host.h"

#include "platform/base/IdSource.h"
#include "platform/base/Log.h"
#include "platform/host/EventLoop.h"
#include "platform/host/FileSystem.h"
#include "platform/host/NullServices.h"
#include "platform/host/ProcessLife.h"

#include <cassert>

namespace cutroom {

namespace {

// What is in force. Changed while no other thread uses the library, read by all of them.
struct InForce {
    HostServices set = nullServices();
    bool installed = false;
    HostServices given; // the set as installed
    struct {
        iUiThread* thread = nullptr;
        iEventQueue* queue = nullptr;
        iIdSource* ids = nullptr;
        iLogSink* log = nullptr;
        iFileSystem* files = nullptr;
    } before; // what the given services took the place of
};

InForce& inForce() noexcept {
    static InForce* const state = new InForce;
    return *state;
}

template <class T> T* orNull(T* given, T* none) noexcept { return given ? given : none; }

HostServices completed(const HostServices& given) noexcept {
    const HostServices& none = nullServices();
    HostServices set = given;
    set.loop = orNull(given.loop, none.loop);
    set.clock = orNull(given.clock, none.clock);
    set.transit = orNull(given.transit, none.transit);
    set.playServer = orNull(given.playServer, none.playServer);
    set.focus = orNull(given.focus, none.focus);
    set.messages = orNull(given.messages, none.messages);
    set.strings = orNull(given.strings, none.strings);
    set.debugCommands = orNull(given.debugCommands, none.debugCommands);
    set.redraw = orNull(given.redraw, none.redraw);
    return set;
}

// Puts the given services in force where files and the layers below the host look for them, and
// keeps what they take the place of; one left out leaves that place alone.
void installBelow(InForce& state, const HostServices& services) noexcept {
    if (services.loop) {
        state.before.thread = installUiThread(services.loop);
        state.before.queue = installEventQueue(services.loop);
    }
    if (services.ids)
        state.before.ids = installIdSource(services.ids);
    if (services.log)
        state.before.log = installLogSink(services.log);
    if (services.files)
        state.before.files = installFileSystem(services.files);
    state.given = services;
}

void restoreBelow(InForce& state) noexcept {
    if (state.given.files)
        installFileSystem(state.before.files);
    if (state.given.log)
        installLogSink(state.before.log);
    if (state.given.ids)
        installIdSource(state.before.ids);
    if (state.given.loop) {
        installEventQueue(state.before.queue);
        installUiThread(state.before.thread);
    }
    state.given = HostServices();
}

} // namespace

void Host::install(const HostServices& services) {
    assert(!installed());
    uninstall();
    ProcessLife::end(); // the unhosted life
    InForce& state = inForce();
    installBelow(state, services);
    state.set = completed(services);
    state.installed = true;
}

void Host::uninstall() noexcept {
    if (!installed())
        return;
    // What is destroyed may post the rest of its destruction, and that may make a single object
    // once more; after the second round nothing of this life is left.
    for (int round = 0; round < 2; ++round) {
        loop().drain();
        ProcessLife::end();
    }
    InForce& state = inForce();
    state.set = nullServices();
    state.installed = false;
    restoreBelow(state);
}

bool Host::installed() noexcept { return inForce().installed; }

iEventLoop& Host::loop() noexcept { return *inForce().set.loop; }
iClock& Host::clock() noexcept { return *inForce().set.clock; }
iTransitStatusManager& Host::transit() noexcept { return *inForce().set.transit; }
iPlayServer& Host::playServer() noexcept { return *inForce().set.playServer; }
iConsoleFocus& Host::focus() noexcept { return *inForce().set.focus; }
iUserMessages& Host::messages() noexcept { return *inForce().set.messages; }
iStringTable& Host::strings() noexcept { return *inForce().set.strings; }
iDebugCommands& Host::debugCommands() noexcept { return *inForce().set.debugCommands; }
iRedraw& Host::redraw() noexcept { return *inForce().set.redraw; }

} // namespace cutroom
