#include "platform/embedded/EmbeddedProject.h"

#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/project/Savers.h"
#include "platform/store/EditManager.h"

#include <new>

namespace cutroom {

namespace {

Status firstFailure(Status first, Status second) { return first.ok() ? second : first; }

// Damaged preferences do not keep the project from being opened: the file is moved aside (if the
// project may be written), and the defaults are used. The file of a project that is open for
// reading only is read once and never written.
Status readPreferences(const std::string& path) {
    const Status read = EditorPreferences::open(path);
    if (read && CurrentProject::isReadOnly())
        return EditorPreferences::close();
    if (read.code() != StatusCode::damaged)
        return read;
    LogBoth("%s; the preferences begin anew\n", read.text().c_str());
    if (CurrentProject::isReadOnly())
        return {};
    const auto aside = moveAside(path);
    return aside ? EditorPreferences::open(path) : aside.status();
}

} // namespace

EmbeddedProject::EmbeddedProject(EmbeddedHost& host) : EmbeddedProject(host.loop()) {
    transport_ = &host.transport();
}

EmbeddedProject::EmbeddedProject(iEventLoop& loop)
    : loop_(loop), entered_(CurrentProject::addListener(
                       makeCallback<NotifyMsg>([this](const NotifyMsg&) { readSettings(); }),
                       CurrentProject::enteredMsgType())) {}

EmbeddedProject::~EmbeddedProject() {
    if (const Status closed = close(); !closed)
        LogBoth("closing the project: %s\n", closed.text().c_str());
}

Status EmbeddedProject::open(const std::string& folder, CurrentProject::Access access,
                             CurrentProject::IfMissing ifMissing) {
    if (CurrentProject::isOpen())
        return CurrentProject::open(folder, access, ifMissing); // refuses
    EditManager::instance(); // rebuilds the database if it is missing
    if (access == CurrentProject::Access::readWrite)
        autosave_.emplace(loop_); // while nothing is open yet, since memory may run out
    Status opened;
    try {
        opened = CurrentProject::open(folder, access, ifMissing);
    } catch (const std::bad_alloc&) {
        autosave_.reset();
        throw;
    }
    if (!opened)
        autosave_.reset();
    return opened && !settings_ ? firstFailure(settings_, close()) : opened;
}

void EmbeddedProject::readSettings() {
    const std::string inside = CurrentProject::getFolder() + '/';
    settings_ = Configuration::instance().load(inside + "configuration.ini");
    if (settings_.ok())
        settings_ = readPreferences(inside + "preferences.ini");
}

Status EmbeddedProject::close() {
    if (!CurrentProject::isOpen() || closing_)
        return {};
    const struct Closing { // lowers the flag after an exception, too
        bool& flag;
        explicit Closing(bool& raised) : flag(raised) { flag = true; }
        ~Closing() { flag = false; }
    } closing(closing_);
    autosave_.reset();
    if (transport_)
        transport_->stop();
    Status outcome = EditManager::instance().handleProjectExit();
    loop_.drain();
    outcome = firstFailure(outcome, Savers::takeFailure());
    if (!CurrentProject::isReadOnly())
        outcome = firstFailure(outcome, EditorPreferences::flush());
    outcome = firstFailure(outcome, CurrentProject::close());
    return firstFailure(outcome, EditorPreferences::close());
}

} // namespace cutroom
