#include "bins/DescriptionFiles.h"

#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/project/CurrentProject.h"

namespace cutroom {

namespace {

// More than a description can hold as it is written, each value on a line of more than 8 bytes.
constexpr std::uint64_t kMaxValues = DescriptionFiles::kMaxBytes / 8;

std::string pathOf(const std::string& name) { return joinPath(CurrentProject::getFolder(), name); }

} // namespace

JSON::ReadOptions DescriptionFiles::readOptions() {
    JSON::ReadOptions options;
    options.maxBytes = kMaxBytes;
    options.maxElements = kMaxValues;
    return options;
}

std::string DescriptionFiles::name(const Cookie& id) const {
    return folder_ + "/" + id.asString() + "." + extension_;
}

Result<CookieVec> DescriptionFiles::list(const std::function<bool(const Cookie&)>& takes) {
    const std::string ending = "." + extension_;
    const auto files = listFiles(pathOf(folder_), ending);
    if (!files)
        return files.status();
    CookieVec ids;
    for (const std::string& file : *files) {
        const auto id = Cookie::fromString(file.substr(0, file.size() - ending.size()));
        if (id && takes(*id))
            ids.push_back(*id);
        else
            noteDamage(folder_ + "/" + file, {StatusCode::damaged, pathOf(folder_ + "/" + file),
                                              "is not named by a cookie of its kind"});
    }
    return ids;
}

Status DescriptionFiles::read(const Cookie& id, const Reader& reader) {
    const std::string path = pathOf(name(id));
    const auto element = JSON::Element::load(path, readOptions());
    const Status status = element ? reader(**element, path) : element.status();
    if (!status) {
        noteDamage(name(id), status);
        return status;
    }
    const CriticalSection::Lock lock(lock_);
    damaged_.erase(name(id));
    return status;
}

Status DescriptionFiles::stage(GroupCommit& group, const Cookie& id, std::string_view text) {
    const std::string file = name(id);
    if (text.size() > kMaxBytes)
        return {StatusCode::failed, pathOf(file), "would become larger than 16 MiB"};
    if (Status made = makeFolders(pathOf(folder_)); !made)
        return made;
    if (Status aside = setAside(file); !aside)
        return aside;
    return group.write(file, text);
}

void DescriptionFiles::reset() {
    const CriticalSection::Lock lock(lock_);
    damaged_.clear();
}

std::vector<Status> DescriptionFiles::damaged() const {
    const CriticalSection::Lock lock(lock_);
    std::vector<Status> all;
    for (const auto& [name, status] : damaged_)
        all.push_back(status);
    return all;
}

void DescriptionFiles::noteDamage(const std::string& name, const Status& status) {
    {
        const CriticalSection::Lock lock(lock_);
        const auto [at, added] = damaged_.try_emplace(name, status);
        if (!added && at->second.text() == status.text())
            return; // told before
        at->second = status;
    }
    LogBoth("%s\n", status.text().c_str());
}

Status DescriptionFiles::setAside(const std::string& name) {
    {
        const CriticalSection::Lock lock(lock_);
        if (damaged_.count(name) == 0)
            return {};
    }
    const auto moved = moveAside(pathOf(name));
    if (!moved && moved.status().code() != StatusCode::notFound)
        return moved.status();
    const CriticalSection::Lock lock(lock_);
    damaged_.erase(name);
    return {};
}

} // namespace cutroom
