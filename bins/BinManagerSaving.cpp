// What the bin manager writes and removes.
#include "bins/BinManager.h"
#include "bins/BinsCache.h"
#include "bins/ContainerNotice.h"
#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/files/GroupCommit.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectLayout.h"
#include "platform/project/ProjectPaths.h"
#include "platform/project/Savers.h"

#include <algorithm>
#include <utility>

using cutroom::GroupCommit;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

Status readOnlyProject() {
    return {StatusCode::failed, CurrentProject::getFolder(),
            "the project is open for reading only"};
}

std::string nameBelowProject(const std::string& path) {
    return cutroom::joinPath(cutroom::kGroupsFolder, cutroom::nameOf(path));
}

// Bins on their way to the disk. They count as saved from the moment when their content is taken;
// those of a group that is given up are dirty again.
class BinsBeingSaved {
public:
    BinsBeingSaved(GroupCommit& group, std::size_t most) : group_(group) { taken_.reserve(most); }
    ~BinsBeingSaved() {
        for (const Kv::Ptr<BinData>& bin : taken_)
            bin->setDirty(true);
    }
    BinsBeingSaved(const BinsBeingSaved&) = delete;
    BinsBeingSaved& operator=(const BinsBeingSaved&) = delete;

    Status take(const Kv::Ptr<BinData>& bin) {
        const auto image = bin->takeForSaving();
        if (!image)
            return image.status();
        taken_.push_back(bin);
        return group_.write(nameBelowProject(image->path), image->bytes);
    }
    void saved() noexcept { taken_.clear(); }

private:
    GroupCommit& group_;
    std::vector<Kv::Ptr<BinData>> taken_;
};

} // namespace

bool BinManager::anyDirty() const {
    const LoadedBins bins = loadedBins();
    return std::any_of(bins.begin(), bins.end(), [](const auto& bin) { return bin->isDirty(); });
}

Status BinManager::saveAll() {
    Status leftOut;
    // Made before anything is written, so that nothing runs out of memory afterwards.
    const auto notice = Kv::makePtr<ContainerNotice>(ContainerNotice::What::saved, CookieVec());
    {
        const CriticalSection::Lock whole(saving_);
        if (Status saved = saveDirty(leftOut); !saved)
            return saved;
    }
    issueNotification(notice);
    return leftOut;
}

Status BinManager::saveDirty(Status& leftOut) {
    forgetOthers();
    LoadedBins due = loadedBins();
    std::erase_if(due, [](const Kv::Ptr<BinData>& bin) { return !bin->isDirty(); });
    if (due.empty() || !CurrentProject::isOpen())
        return {};
    if (CurrentProject::isReadOnly())
        return readOnlyProject();
    std::sort(due.begin(), due.end(),
              [](const auto& a, const auto& b) { return a->getID() < b->getID(); });
    GroupCommit group(CurrentProject::getFolder());
    BinsBeingSaved bins(group, due.size());
    for (const Kv::Ptr<BinData>& bin : due) {
        const Status taken = bins.take(bin);
        if (taken)
            continue;
        if (taken.code() != StatusCode::failed)
            return taken;
        if (leftOut.ok()) // its own file is not to be replaced
            leftOut = taken;
    }
    if (Status committed = group.commit(); !committed)
        return committed;
    bins.saved();
    // A cache older than a bin's file is not trusted about that bin.
    const CriticalSection::Lock held(mapsLock_);
    cacheIsCurrent_ = false;
    return {};
}

// --- removing ------------------------------------------------------------------------------------

Status BinManager::destroy(const Cookie& id, const LightweightString<char>& reason) {
    const Cookie bin = id; // a copy: `id` may be the cookie of an item that is removed here
    {
        const CriticalSection::Lock whole(saving_);
        if (!isKnown(bin))
            return {StatusCode::notFound, bin.asString(), "there is no such bin"};
        if (Status removed = removeFile(bin); !removed)
            return removed;
        forget(bin);
    }
    CookieVec holders = findBinsContainingBin(bin);
    for (const Kv::Ptr<BinData>& loaded : loadedBins())
        if (loaded->contains(bin)) // though it may accept no bins
            holders.push_back(loaded->getID());
    for (const Cookie& holder : holders)
        if (const Kv::Ptr<BinData> held = getData(holder))
            held->handleDeletions({bin}, reason);
    issueNotification(
        Kv::makePtr<ContainerNotice>(ContainerNotice::What::destroyed, CookieVec{bin}, reason));
    return {};
}

Status BinManager::removeFile(const Cookie& bin) {
    if (!CurrentProject::isOpen())
        return {};
    if (CurrentProject::isReadOnly())
        return readOnlyProject();
    GroupCommit group(CurrentProject::getFolder());
    const std::string path = cutroom::toUtf8(getFileNameForLogGroup(bin, nullptr, Cookie()));
    if (Status staged = group.remove(nameBelowProject(path)); !staged)
        return staged;
    return group.commit();
}

// --- the cache -----------------------------------------------------------------------------------

Status BinManager::updateBinsCacheFile() {
    refreshSummaries();
    {
        const CriticalSection::Lock held(mapsLock_);
        if (cacheIsCurrent_)
            return {};
    }
    return writeBinsCacheFile();
}

Status BinManager::writeBinsCacheFile() {
    const std::string path = cutroom::toUtf8(getBinsCacheFilename());
    if (path.empty() || CurrentProject::isReadOnly())
        return {};
    std::string bytes;
    {
        const CriticalSection::Lock held(mapsLock_);
        bytes = cutroom::binsCacheBytes(summaries_);
        cacheIsCurrent_ = true;
    }
    Status written = cutroom::writeFile(path, bytes, cutroom::Backup::none);
    if (written)
        return written;
    const CriticalSection::Lock held(mapsLock_);
    cacheIsCurrent_ = false;
    return written;
}
