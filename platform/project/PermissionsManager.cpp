#include "platform/project/PermissionsManager.h"

#include "platform/files/Files.h"
#include "platform/project/ProjectLayout.h"
#include "platform/project/SealedJson.h"

#include <cstdlib>
#include <utility>

using cutroom::Status;
using cutroom::StatusCode;

namespace {

constexpr std::string_view kFormat = "cutroom-permissions";
constexpr int kVersion = 1;
constexpr char kUnknownUser[] = "user";

std::string loginName() {
    for (const char* const variable : {"LOGNAME", "USER", "USERNAME"})
        if (const char* const name = std::getenv(variable); name && *name)
            return cutroom::isUtf8(name) ? name : kUnknownUser;
    return kUnknownUser;
}

} // namespace

PermissionsManager& PermissionsManager::instance() {
    return cutroom::ProcessSingleton<PermissionsManager>::get();
}

std::string PermissionsManager::currentUserLocked() const {
    return user_.empty() ? loginName() : user_;
}

std::string PermissionsManager::getCurrentUser() const {
    CriticalSection::Lock lock(lock_);
    return currentUserLocked();
}

void PermissionsManager::setCurrentUser(const std::string& user) {
    CriticalSection::Lock lock(lock_);
    user_ = user;
}

bool PermissionsManager::isReadOnly(const Cookie& cookie) const {
    CriticalSection::Lock lock(lock_);
    if (!cookie.valid() || folder_.empty())
        return false;
    if (readOnly_)
        return true;
    const auto found = marks_.find(cookie);
    if (found == marks_.end())
        return false;
    const Mark& mark = found->second;
    return mark.isProtected || (!mark.holder.empty() && mark.holder != currentUserLocked());
}

std::string PermissionsManager::getLockHolder(const Cookie& cookie) const {
    CriticalSection::Lock lock(lock_);
    const auto found = marks_.find(cookie);
    return found == marks_.end() ? std::string() : found->second.holder;
}

bool PermissionsManager::isProtected(const Cookie& cookie) const {
    CriticalSection::Lock lock(lock_);
    const auto found = marks_.find(cookie);
    return found != marks_.end() && found->second.isProtected;
}

PermissionsManager::Mark PermissionsManager::markOf(const Cookie& cookie) const {
    const auto found = marks_.find(cookie);
    return found == marks_.end() ? Mark() : found->second;
}

Status PermissionsManager::lock(const Cookie& cookie) {
    CriticalSection::Lock lock(lock_);
    Mark mark = markOf(cookie);
    if (!mark.holder.empty() && mark.holder != currentUserLocked())
        return Status(StatusCode::failed, cookie.asString(), "locked by " + mark.holder);
    mark.holder = currentUserLocked();
    return change(cookie, mark);
}

Status PermissionsManager::takeOver(const Cookie& cookie) {
    CriticalSection::Lock lock(lock_);
    Mark mark = markOf(cookie);
    mark.holder = currentUserLocked();
    return change(cookie, mark);
}

Status PermissionsManager::unlock(const Cookie& cookie) {
    CriticalSection::Lock lock(lock_);
    Mark mark = markOf(cookie);
    if (!mark.holder.empty() && mark.holder != currentUserLocked())
        return Status(StatusCode::failed, cookie.asString(), "locked by " + mark.holder);
    mark.holder.clear();
    return change(cookie, mark);
}

Status PermissionsManager::setProtected(const Cookie& cookie, bool on) {
    CriticalSection::Lock lock(lock_);
    Mark mark = markOf(cookie);
    mark.isProtected = on;
    return change(cookie, mark);
}

Status PermissionsManager::forget(const Cookie& cookie) {
    CriticalSection::Lock lock(lock_);
    return marks_.count(cookie) ? change(cookie, Mark()) : Status();
}

// The marks in memory change only after the file was written.
Status PermissionsManager::change(const Cookie& cookie, const Mark& mark) {
    if (folder_.empty() || readOnly_)
        return Status(StatusCode::failed, cookie.asString(),
                      folder_.empty() ? "no project is open" : "the project is open for reading");
    if (!cookie.valid())
        return Status(StatusCode::wrongUsage, cookie.asString(), "this is no asset");
    if (markOf(cookie) == mark)
        return {};
    std::map<Cookie, Mark> marks = marks_;
    if (mark == Mark())
        marks.erase(cookie);
    else
        marks.insert_or_assign(cookie, mark);
    if (Status status = save(marks); !status)
        return status;
    marks_ = std::move(marks);
    return {};
}

Status PermissionsManager::save(const std::map<Cookie, Mark>& marks) const {
    const auto write = [&](JSON::Builder& out) {
        out.beginArray("marks");
        for (const auto& [cookie, mark] : marks) {
            out.beginObject();
            out.add("cookie", cookie.asString());
            if (!mark.holder.empty())
                out.add("holder", mark.holder);
            if (mark.isProtected)
                out.add("protected", true);
            out.endObject();
        }
        out.endArray();
    };
    return cutroom::SealedJson::save(cutroom::joinPath(folder_, cutroom::kPermissionsFile), kFormat,
                                     kVersion, write, former_, {"marks"});
}

Status PermissionsManager::load(const std::string& projectFolder, bool readOnly) {
    unload();
    CriticalSection::Lock lock(lock_);
    folder_ = projectFolder;
    readOnly_ = readOnly;
    const auto root = cutroom::SealedJson::load(
        cutroom::joinPath(projectFolder, cutroom::kPermissionsFile), kFormat, kVersion);
    if (!root)
        return root.status().code() == StatusCode::notFound ? Status() : root.status();
    former_ = *root;
    if (const Kv::Ptr<JSON::Element> list = former_->find("marks"))
        for (JSON::Cursor item = JSON::Cursor::childrenOf(*list); item; item.next())
            if (const auto cookie = Cookie::fromString(item.getText("cookie")))
                marks_[*cookie] = {std::string(item.getText("holder")), item.getBool("protected")};
    return {};
}

void PermissionsManager::unload() {
    CriticalSection::Lock lock(lock_);
    marks_.clear();
    former_.reset();
    folder_.clear();
    readOnly_ = false;
}
