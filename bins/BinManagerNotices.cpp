// What the bin manager is told, the life of its project, and the exporters.
#include "bins/BinHandle.h"
#include "bins/BinManager.h"
#include "bins/BinsCache.h"
#include "bins/ContainerNotice.h"
#include "platform/base/Log.h"
#include "platform/files/Files.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/Savers.h"

#include <algorithm>
#include <utility>

using cutroom::Status;

// --- changes -------------------------------------------------------------------------------------

void BinManager::handleBinModification(const Cookie& bin,
                                       const ContainerBase::Modifications& changes,
                                       LightweightString<char> reason) {
    noteChanged(bin);
    if (hasListeners())
        issueNotification(Kv::makePtr<ContainerNotice>(bin, changes, std::move(reason)));
}

// A bin that is being read now is read again, since what has gone may have been there before.
void BinManager::handleLogsDeletion(const CookieVec& logs, const LightweightString<char>& reason) {
    {
        const CriticalSection::Lock held(mapsLock_);
        ++removals_;
    }
    for (const Kv::Ptr<BinData>& bin : loadedBins())
        bin->handleDeletions(logs, reason);
}

void BinManager::handleLogsModification(const std::vector<EditManager::Modification>& changes) {
    for (const Kv::Ptr<BinData>& bin : loadedBins())
        bin->handleLogsModified(changes);
}

void BinManager::handleDocumentModifications(const NotifyMsg& message) {
    const auto* const notice = message.getObjectAs<ContainerNotice>();
    if (!notice)
        return;
    if (notice->destroyed())
        handleLogsDeletion(notice->subjects(), notice->reason());
    else if (notice->what() == ContainerNotice::What::changed)
        for (const Kv::Ptr<BinData>& bin : loadedBins())
            bin->handleDocumentsModified(notice->subjects());
}

bool BinManager::importAssets(const LightweightVector<AssetReference>& assets, const Cookie& bin) {
    const Kv::Ptr<BinData> target = BinHandle(bin).getBin(); // a filter's bin takes assets too
    return target && target->add(assets);
}

Status BinManager::reload(const Cookie& bin) {
    const Kv::Ptr<BinData> loaded = findLoaded(bin);
    if (!loaded)
        return {cutroom::StatusCode::notFound, bin.asString(), "the bin is not loaded"};
    if (!cutroom::fileExists(cutroom::toUtf8(loaded->getLocation())))
        return {cutroom::StatusCode::notFound, bin.asString(), "the bin has not been saved yet"};
    if (Status read = loaded->load(); !read)
        return read;
    loaded->tellModification(ContainerBase::Modification(ContainerBase::kModItemsAdded |
                                                         ContainerBase::kModItemsRemoved),
                             "reload");
    return {};
}

// --- the project ---------------------------------------------------------------------------------

void BinManager::handleProjectEntry() { reInit(); }

void BinManager::handleProjectExit() {
    if (const Status saved = saveAll(); !saved) {
        LogBoth("bins: %s\n", saved.text().c_str());
        cutroom::Savers::noteFailure(saved);
    } else {
        const CriticalSection::Lock whole(saving_);
        if (const Status written = updateBinsCacheFile(); !written)
            LogBoth("%s\n", written.text().c_str());
    }
    forgetAll();
}

void BinManager::forgetAll() {
    std::unordered_map<Cookie, Loaded> gone; // die outside the lock
    const CriticalSection::Lock held(mapsLock_);
    ++removals_;
    gone.swap(loaded_);
    summaries_.clear();
    cacheIsCurrent_ = true;
}

// Not done when a project is entered: other listeners may be told of that earlier, and make bins.
void BinManager::forgetOthers() {
    const Cookie project = CurrentProject::getCookie();
    if (!project.valid())
        return;
    LoadedBins gone; // die outside the lock
    const CriticalSection::Lock held(mapsLock_);
    for (auto entry = loaded_.begin(); entry != loaded_.end();) {
        if (entry->second.project == project) {
            ++entry;
            continue;
        }
        gone.push_back(entry->second.bin);
        summaries_.erase(entry->first);
        entry = loaded_.erase(entry);
        ++removals_;
    }
}

void BinManager::reInit() {
    if (const Status saved = saveAll(); !saved)
        LogBoth("%s\n", saved.text().c_str()); // what is not saved stays
    {
        const CriticalSection::Lock whole(saving_);
        setupFromCacheFile();
    }
    issueNotification(Kv::makePtr<ContainerNotice>(ContainerNotice::What::reset, CookieVec()));
}

// Bins that somebody else holds, or that are not saved, stay: there is one object to a cookie.
void BinManager::setupFromCacheFile() {
    cutroom::FoundBins found = cutroom::findBins();
    LoadedBins gone; // die outside the lock
    const CriticalSection::Lock held(mapsLock_);
    summaries_ = std::move(found.summaries);
    cacheIsCurrent_ = found.cacheIsCurrent;
    for (auto entry = loaded_.begin(); entry != loaded_.end();) {
        Loaded& loaded = entry->second;
        if (loaded.bin->refCount() == 1 && !loaded.bin->isDirty()) {
            gone.push_back(std::move(loaded.bin));
            entry = loaded_.erase(entry);
            continue;
        }
        ++loaded.changes; // its summary is read from it
        summaries_[entry->first].id = entry->first;
        ++entry;
    }
    ++removals_;
}

// --- metadata exporters --------------------------------------------------------------------------

void BinManager::registerMetadataExporter(Kv::Ptr<iAssetMetadataExporter> exporter) {
    if (!exporter)
        return;
    const LightweightString<wchar_t> name = exporter->getFormatName();
    Kv::Ptr<iAssetMetadataExporter> replaced; // goes outside the lock
    const CriticalSection::Lock held(mapsLock_);
    for (Exporter& known : exporters_)
        if (known.name == name) {
            replaced = std::exchange(known.exporter, std::move(exporter));
            return;
        }
    exporters_.push_back({name, std::move(exporter)});
}

void BinManager::deRegisterMetadataExporter(const LightweightString<wchar_t>& name) {
    Kv::Ptr<iAssetMetadataExporter> removed; // goes outside the lock
    const CriticalSection::Lock held(mapsLock_);
    const auto found = std::find_if(exporters_.begin(), exporters_.end(),
                                    [&](const Exporter& known) { return known.name == name; });
    if (found == exporters_.end())
        return;
    removed = std::move(found->exporter);
    exporters_.erase(found);
}

std::vector<Kv::Ptr<iAssetMetadataExporter>> BinManager::getMetadataExporters() const {
    std::vector<Kv::Ptr<iAssetMetadataExporter>> exporters;
    const CriticalSection::Lock held(mapsLock_);
    for (const Exporter& known : exporters_)
        exporters.push_back(known.exporter);
    return exporters;
}
