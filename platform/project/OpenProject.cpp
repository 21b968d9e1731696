#include "platform/project/OpenProject.h"

#include "platform/base/Log.h"
#include "platform/base/Strings.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/Files.h"
#include "platform/files/GroupCommit.h"
#include "platform/project/MediaStatus.h"
#include "platform/project/PermissionsManager.h"
#include "platform/project/ProjectDatabase.h"
#include "platform/project/ProjectLayout.h"
#include "platform/project/ProjectPaths.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

namespace cutroom {

namespace {

constexpr std::string_view kLockFile = "lock";
constexpr std::string_view kFolderSuffix = ".project";

Result<std::string> absoluteFolder(const std::string& folder) {
    if (Status status = checkPath(folder); !status)
        return status;
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(folder, error);
    if (error)
        return Status(StatusCode::inputOutput, folder, error.message());
    std::string text = whole.lexically_normal().string();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    return text;
}

// The folder's name, without the suffix that marks a project.
std::wstring nameFor(const std::string& folder) {
    std::string name = nameOf(folder);
    if (name.size() > kFolderSuffix.size() && name.ends_with(kFolderSuffix))
        name.resize(name.size() - kFolderSuffix.size());
    return toWide(name);
}

ProjectFile freshFile(const std::string& folder) {
    ProjectFile file;
    file.id = Cookie::make('P');
    file.name = nameFor(folder);
    return file;
}

std::string projectFileIn(const std::string& folder) { return joinPath(folder, kProjectFile); }

// The edits and logs that have a file, of whatever content.
Result<CookieVec> editsIn(const std::string& folder) {
    const std::string suffix = std::string(".") + kEditExtension;
    const Result<std::vector<std::string>> names =
        fileSystem().list(joinPath(folder, kEditsFolder));
    if (!names && names.status().code() != StatusCode::notFound)
        return names.status();
    CookieVec edits;
    for (const std::string& name : names ? *names : std::vector<std::string>())
        if (name.ends_with(suffix))
            if (const auto cookie = Cookie::fromString(name.substr(0, name.size() - suffix.size()));
                cookie && cookie->type() == 'E')
                edits.push_back(*cookie);
    return edits;
}

// Whether the database lacks an edit whose file is whole and of a version known here: one of them
// was copied or put back without the other.
bool missesEdits(const std::string& folder, const CookieVec& edits) {
    const std::vector<bool> known = ProjectDatabase::instance().arePresent(edits);
    for (std::size_t i = 0; i < edits.size(); ++i) {
        if (known[i])
            continue;
        const std::string path =
            joinPath(joinPath(folder, kEditsFolder), edits[i].asString() + '.' + kEditExtension);
        const Result<std::string> bytes = readFile(path);
        if (bytes && CheckedFile::open(*bytes, kEditKind, kEditVersion, path))
            return true;
    }
    return false;
}

// A writer is through with a group in milliseconds; one that stays was left in the midst.
bool groupWasLeft(const std::string& folder) {
    constexpr int kLooks = 20;
    constexpr std::chrono::milliseconds kBetween{10};
    for (int look = 0; GroupCommit::pending(folder); ++look) {
        if (look == kLooks)
            return true;
        std::this_thread::sleep_for(kBetween);
    }
    return false;
}

} // namespace

OpenProject& OpenProject::instance() { return ProcessSingleton<OpenProject>::get(); }

// The life ends with the project open: nobody is told any more, but the records are kept.
OpenProject::~OpenProject() {
    if (ProjectDatabase* const database = ProcessSingleton<ProjectDatabase>::find())
        if (const Status status = database->close(); !status)
            LogBoth("%s\n", status.text().c_str());
}

// --- opening ---------------------------------------------------------------------------------

Status OpenProject::open(const std::string& folder, CurrentProject::Access access,
                         CurrentProject::IfMissing ifMissing) {
    if (isOpen() || isExiting())
        return Status(StatusCode::wrongUsage, isOpen() ? this->folder() : folder,
                      isOpen() ? "a project is open already" : "a project is being closed");
    const Result<std::string> whole = absoluteFolder(folder);
    if (!whole)
        return whole.status();
    PermissionsManager::instance(); // here memory may run out, while forgetting it may not
    MediaStatus::instance();
    forget();
    if (Status status = checkFolder(*whole, ifMissing); !status)
        return status;
    readOnly_.store(access == CurrentProject::Access::readOnly, std::memory_order_release);
    Status status = isReadOnly() ? Status() : prepareForWriting(*whole);
    if (status)
        status = loadFile(*whole);
    if (status)
        status = openParts(*whole);
    if (!status) {
        forget();
        return status;
    }
    tell(CurrentProject::enteredMsgType(), cookie());
    return {};
}

Status OpenProject::checkFolder(const std::string& folder,
                                CurrentProject::IfMissing ifMissing) const {
    const std::string file = projectFileIn(folder);
    if (fileExists(file) || fileExists(file + ".bak"))
        return {};
    if (ifMissing == CurrentProject::IfMissing::fail)
        return Status(StatusCode::notFound, folder, "there is no project");
    if (!fileExists(folder))
        return {};
    const Result<std::vector<std::string>> entries = fileSystem().list(folder);
    if (!entries)
        return entries.status();
    const bool empty = std::all_of(entries->begin(), entries->end(), [](const std::string& name) {
        return name == kLockFile || isTemporaryName(name);
    });
    return empty ? Status()
                 : Status(StatusCode::wrongUsage, folder,
                          "the folder holds other files and no project");
}

Status OpenProject::prepareForWriting(const std::string& folder) {
    if (Status status = makeFolders(folder); !status)
        return status;
    Result<FolderLock> taken = FolderLock::take(folder);
    if (!taken)
        return taken.status();
    folderLock_.emplace(std::move(*taken));
    filesRecovered_ = GroupCommit::pending(folder);
    return GroupCommit::recover(folder).status();
}

Status OpenProject::loadFile(const std::string& folder) {
    const std::string path = projectFileIn(folder);
    Result<ProjectFile> file = ProjectFile::load(path);
    if (file) {
        CriticalSection::Lock lock(lock_);
        file_ = std::move(*file);
        return {};
    }
    const StatusCode code = file.status().code();
    if (code != StatusCode::damaged && code != StatusCode::notFound)
        return file.status();
    return replaceDamagedFile(folder, file.status());
}

// For a new project, or one whose project.json is damaged or gone: takes the version before, or a
// fresh one when there is none.
Status OpenProject::replaceDamagedFile(const std::string& folder, const Status& damage) {
    const std::string path = projectFileIn(folder);
    const Result<ProjectFile> former = ProjectFile::load(path + ".bak");
    const bool isNew =
        damage.code() == StatusCode::notFound && former.status().code() == StatusCode::notFound;
    if (!isNew)
        warn(damage);
    const ProjectFile replacement = former ? *former : freshFile(folder);
    if (!isReadOnly()) {
        if (damage.code() == StatusCode::damaged)
            if (const Result<std::string> moved = moveAside(path); !moved)
                return moved.status();
        if (Status status = replacement.save(path); !status)
            return status;
    }
    CriticalSection::Lock lock(lock_);
    file_ = replacement;
    return {};
}

Status OpenProject::openParts(const std::string& folder) {
    if (!isReadOnly()) {
        for (const char* const part :
             {kEditsFolder, kFiltersFolder, kDocumentsFolder, kAssociationsFolder})
            if (const std::string path = joinPath(folder, part); !fileExists(path))
                if (Status status = makeFolders(path); !status)
                    return status;
    } else if (groupWasLeft(folder)) {
        warn(Status(StatusCode::damaged, folder,
                    "a group of changes waits to be completed by a writing command"));
    }
    const Status permissions = loadPermissions(folder);
    return permissions ? openDatabase(folder) : permissions;
}

// Marks that the system cannot read at the moment must not be written over, so the project does not
// open for writing without them.
Status OpenProject::loadPermissions(const std::string& folder) {
    PermissionsManager& permissions = PermissionsManager::instance();
    const Status status = permissions.load(folder, isReadOnly());
    if (status)
        return {};
    if (!isReadOnly() && status.code() != StatusCode::damaged)
        return status;
    warn(status);
    return isReadOnly() ? Status() : moveAside(joinPath(folder, kPermissionsFile)).status();
}

Status OpenProject::openDatabase(const std::string& folder) {
    const std::string path = joinPath(folder, kDatabaseFile);
    const Result<FileInfo> before = fileSystem().stat(path);
    Status damage;
    const Result<ProjectDatabase::Opened> opened =
        ProjectDatabase::instance().open(path, isReadOnly(), &damage);
    if (!opened)
        return opened.status();
    if (!damage.ok())
        warn(damage);
    const Result<CookieVec> edits = editsIn(folder);
    const bool isNew = *opened == ProjectDatabase::Opened::fresh;
    bool isBehind = *opened == ProjectDatabase::Opened::interrupted || filesRecovered_;
    if (!isNew && !isBehind && edits && missesEdits(folder, *edits)) {
        isBehind = !isReadOnly();
        if (isReadOnly() && isSameDatabase(before, path)) // else a writer is at it
            warn(Status(StatusCode::damaged, path,
                        "edits of the project are missing in it; a writing command adds them"));
    }
    publish(folder); // nothing before it, when memory runs out, leaves the project open
    if (isNew ? edits && edits->empty() : !isBehind || !rebuild_)
        return {};
    if (const Status status = rebuildDatabase(); !status)
        warn(status);
    return {};
}

// From here on the project answers as open.
void OpenProject::publish(const std::string& folder) {
    {
        CriticalSection::Lock lock(lock_);
        folder_ = folder;
    }
    MediaStatus::instance().forgetAll();
    open_.store(true, std::memory_order_release);
}

void OpenProject::warn(const Status& status) {
    LogBoth("%s\n", status.text().c_str());
    CriticalSection::Lock lock(lock_);
    warnings_.push_back(status);
}

// An edit that cannot be read keeps its record, without which bins would lose it for good.
Status OpenProject::rebuildDatabase() {
    if (!rebuild_)
        return Status(StatusCode::notFound, joinPath(folder(), kDatabaseFile),
                      "nobody can rebuild the database");
    const Result<CookieVec> edits = editsIn(folder());
    if (!edits)
        return edits.status();
    ProjectDatabase& database = ProjectDatabase::instance();
    database.beginBatch();
    Status status = database.removeAllBut(*edits);
    if (status)
        status = (*rebuild_)();
    if (!status)
        database.revertBatch();
    Status ended = database.endBatch();
    return status ? ended : status;
}

// --- closing ---------------------------------------------------------------------------------

Status OpenProject::close() {
    if (!isOpen() || isExiting())
        return {};
    const Cookie project = cookie();
    struct Exiting { // ends when memory runs out, too
        std::atomic<bool>& flag;
        ~Exiting() { flag.store(false, std::memory_order_release); }
    } const exiting{exiting_};
    exiting_.store(true, std::memory_order_release);
    tell(CurrentProject::aboutToExitMsgType(), project);
    Status status = ProjectDatabase::instance().close();
    forget();
    tell(CurrentProject::exitedMsgType(), project);
    return status;
}

void OpenProject::forget() noexcept {
    open_.store(false, std::memory_order_release);
    readOnly_.store(false, std::memory_order_release);
    filesRecovered_ = false;
    PermissionsManager::instance().unload();
    MediaStatus::instance().forgetAll();
    {
        CriticalSection::Lock lock(lock_);
        file_ = ProjectFile();
        folder_.clear();
        warnings_.clear();
    }
    folderLock_.reset();
}

void OpenProject::tell(int msgType, const Cookie& project) {
    notifier_.issueNotification(NotifyMsg(project.asString()), msgType);
}

// --- asking ----------------------------------------------------------------------------------

ProjectFile OpenProject::file() const {
    CriticalSection::Lock lock(lock_);
    return file_;
}

Cookie OpenProject::cookie() const {
    CriticalSection::Lock lock(lock_);
    return file_.id;
}

std::vector<LogAttribute> OpenProject::customAttributes() const {
    CriticalSection::Lock lock(lock_);
    return file_.customAttributes;
}

std::string OpenProject::folder() const {
    CriticalSection::Lock lock(lock_);
    return folder_;
}

std::vector<Status> OpenProject::warnings() const {
    CriticalSection::Lock lock(lock_);
    return warnings_;
}

Status OpenProject::replaceFile(ProjectFile changed) {
    if (!isOpen() || isReadOnly())
        return Status(StatusCode::failed, folder(),
                      isOpen() ? "the project is open for reading" : "no project is open");
    if (Status status = changed.save(projectFileIn(folder())); !status)
        return status;
    CriticalSection::Lock lock(lock_);
    file_ = std::move(changed);
    return {};
}

} // namespace cutroom
