#include "platform/project/CurrentProject.h"

#include "platform/messaging/NotifyMsgTypeDictionary.h"
#include "platform/project/OpenProject.h"

#include <array>
#include <utility>

using cutroom::OpenProject;
using cutroom::ProjectFile;
using cutroom::Result;
using cutroom::Status;
using cutroom::StatusCode;

Status CurrentProject::open(const std::string& folder, Access access, IfMissing ifMissing) {
    return OpenProject::instance().open(folder, access, ifMissing);
}
Status CurrentProject::close() { return OpenProject::instance().close(); }

std::vector<Status> CurrentProject::getWarnings() { return OpenProject::instance().warnings(); }

bool CurrentProject::isOpen() noexcept { return OpenProject::instance().isOpen(); }
bool CurrentProject::isReadOnly() noexcept { return OpenProject::instance().isReadOnly(); }
bool CurrentProject::isExiting() noexcept { return OpenProject::instance().isExiting(); }

Cookie CurrentProject::getCookie() { return OpenProject::instance().cookie(); }
LightweightString<wchar_t> CurrentProject::getName() { return OpenProject::instance().file().name; }
std::string CurrentProject::getFolder() { return OpenProject::instance().folder(); }
ProjectDefaults CurrentProject::getDefaults() { return OpenProject::instance().file().defaults; }

Status CurrentProject::setName(const LightweightString<wchar_t>& name) {
    if (name.empty() || !cutroom::toUtf8Strict(name))
        return Status(StatusCode::wrongUsage, getFolder(), "this is no name for a project");
    ProjectFile file = OpenProject::instance().file();
    file.name = name;
    return OpenProject::instance().replaceFile(std::move(file));
}

Status CurrentProject::setDefaults(const ProjectDefaults& defaults) {
    if (!defaults.frameRate.valid() ||
        (defaults.dropFrame && !defaults.frameRate.allowsDropFrame()))
        return Status(StatusCode::wrongUsage, getFolder(), "this rate cannot be the default");
    if (!defaults.mixConfiguration.empty() && !cutroom::isPlainFileName(defaults.mixConfiguration))
        return Status(StatusCode::wrongUsage, getFolder(), "this is no plain file name");
    ProjectFile file = OpenProject::instance().file();
    file.defaults = defaults;
    return OpenProject::instance().replaceFile(std::move(file));
}

std::vector<LogAttribute> CurrentProject::getCustomAttributes() {
    return OpenProject::instance().customAttributes();
}

Result<LogAttribute>
CurrentProject::addCustomAttribute(const std::string& id,
                                   const LightweightString<wchar_t>& displayName,
                                   DBFieldTypes::eType fieldType) {
    if (!cutroom::isAttributeID(id))
        return Status(StatusCode::wrongUsage, id, "this cannot name an attribute");
    if (id == "Markers" || id == "MarkerTypes")
        return Status(StatusCode::wrongUsage, id, "this means markers in saved searches");
    if (const std::optional<LogAttribute> present = LogAttribute::fromID(id)) {
        if (present->isCustom())
            return *present;
        return Status(StatusCode::wrongUsage, id, "the attribute is built in");
    }
    ProjectFile file = OpenProject::instance().file();
    const LogAttribute added(static_cast<unsigned>(file.customAttributes.size()), id, displayName,
                             fieldType);
    file.customAttributes.push_back(added);
    if (Status status = OpenProject::instance().replaceFile(std::move(file)); !status)
        return status;
    return added;
}

int CurrentProject::enteredMsgType() {
    return NotifyMsgTypeDictionary::instance().intern("projectEntered");
}
int CurrentProject::aboutToExitMsgType() {
    return NotifyMsgTypeDictionary::instance().intern("projectAboutToExit");
}
int CurrentProject::exitedMsgType() {
    return NotifyMsgTypeDictionary::instance().intern("projectExited");
}

Kv::Ptr<Guard> CurrentProject::addListener(const CallbackPtr<NotifyMsg>& callback, int msgType) {
    return OpenProject::instance().notifier().addListener(callback, msgType);
}

Kv::Ptr<Guard> CurrentProject::addListener(const CallbackPtr<NotifyMsg>& callback) {
    if (!callback)
        return {};
    std::array<Kv::Ptr<Guard>, 3> guards = {addListener(callback, enteredMsgType()),
                                            addListener(callback, aboutToExitMsgType()),
                                            addListener(callback, exitedMsgType())};
    return Kv::makePtr<Kv::ActionGuard>([kept = std::move(guards)] {});
}

Kv::Ptr<Guard> CurrentProject::installDatabaseRebuilder(std::function<Status()> rebuild) {
    OpenProject& project = OpenProject::instance();
    if (!rebuild || project.rebuilder())
        return {};
    const auto installed = std::make_shared<const std::function<Status()>>(std::move(rebuild));
    project.rebuilder() = installed;
    // A guard that outlives the life in which it was made leaves the next one's rebuilder alone.
    return Kv::makePtr<Kv::ActionGuard>([installed] {
        OpenProject* const current = cutroom::ProcessSingleton<OpenProject>::find();
        if (current && current->rebuilder() == installed)
            current->rebuilder().reset();
    });
}

Status CurrentProject::rebuildDatabase() {
    if (!isOpen())
        return Status(StatusCode::failed, "", "no project is open");
    return OpenProject::instance().rebuildDatabase();
}
