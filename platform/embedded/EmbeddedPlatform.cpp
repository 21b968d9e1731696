#include "platform/embedded/EmbeddedPlatform.h"

#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/store/EditManager.h"

namespace cutroom {

namespace {

Status firstFailure(Status first, Status second) { return first.ok() ? second : first; }

} // namespace

EmbeddedPlatform::EmbeddedPlatform(const EmbeddedOptions& options)
    : loop_(options.clock ? *options.clock : static_cast<iLoopClock&>(systemClock_)),
      transport_(loop_, loop_.clock()) {
    host_.emplace(services(options));
    for (const auto& [key, text] : options.configuration)
        Configuration::instance().set(key, text);
}

EmbeddedPlatform::~EmbeddedPlatform() {
    if (const Status closed = closeProject(); !closed)
        LogBoth("closing the project: %s\n", closed.text().c_str());
}

HostServices EmbeddedPlatform::services(const EmbeddedOptions& options) {
    HostServices set;
    set.loop = &loop_;
    set.clock = &loop_.clock();
    set.ids = options.ids;
    set.log = options.log;
    set.transit = &transport_;
    set.playServer = &transport_;
    set.focus = &focus_;
    set.messages = &messages_;
    set.strings = &texts_;
    set.debugCommands = &debugCommands_;
    set.redraw = &redraw_;
    return set;
}

Status EmbeddedPlatform::openProject(const std::string& folder, CurrentProject::Access access,
                                     CurrentProject::IfMissing ifMissing) {
    if (const Status opened = CurrentProject::open(folder, access, ifMissing); !opened)
        return opened;
    const std::string inside = CurrentProject::getFolder() + '/';
    Status read = Configuration::instance().load(inside + "configuration.ini");
    if (read.ok())
        read = EditorPreferences::open(inside + "preferences.ini");
    if (!read) {
        const Status closed = CurrentProject::close();
        return firstFailure(read, closed);
    }
    return {};
}

Status EmbeddedPlatform::closeProject() {
    if (!CurrentProject::isOpen())
        return {};
    transport_.stop();
    Status outcome = EditManager::instance().handleProjectExit();
    loop_.pump();
    if (!CurrentProject::isReadOnly())
        outcome = firstFailure(outcome, EditorPreferences::flush());
    return firstFailure(outcome, CurrentProject::close());
}

} // namespace cutroom
