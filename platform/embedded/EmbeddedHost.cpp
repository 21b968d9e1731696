#include "platform/embedded/EmbeddedHost.h"

namespace cutroom {

EmbeddedHost::EmbeddedHost(const Options& options)
    : loop_(options.time == Time::manual ? static_cast<iLoopClock&>(manualClock_) : systemClock_),
      transport_(loop_, loop_.clock()) {
    Host::install(services(options));
}

EmbeddedHost::~EmbeddedHost() {
    loop_.becomeUiThread();
    transport_.stop();
    Host::uninstall();
}

HostServices EmbeddedHost::services(const Options& options) noexcept {
    HostServices set;
    set.loop = &loop_;
    set.clock = &loop_.clock();
    set.ids = options.ids == Ids::fixed ? &fixedIds_ : nullptr;
    set.log = options.log;
    set.transit = &transport_;
    set.playServer = &transport_;
    set.focus = &focus_;
    set.messages = &messages_;
    set.strings = &texts_;
    set.debugCommands = &debugCommands_;
    set.redraw = &redraw_;
    set.files = options.files;
    return set;
}

} // namespace cutroom
