// The loaded bins.
#include "bins/BinManager.h"

#include "bins/BinsCache.h"
#include "bins/ContainerNotice.h"
#include "bins/DocumentManager.h"
#include "platform/base/Log.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/files/KVContainerFile.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectPaths.h"
#include "platform/project/Savers.h"

#include <array>
#include <atomic>
#include <utility>

using cutroom::Status;
using cutroom::StatusCode;

namespace {

std::string pathOf(const Cookie& bin) {
    return cutroom::toUtf8(getFileNameForLogGroup(bin, nullptr, Cookie()));
}

bool isBinCookie(const Cookie& bin) { return bin.type() == 'G' || bin.type() == 'M'; }

std::array<std::atomic<cutroom::BinMaker>, 2> makers{};

std::atomic<cutroom::BinMaker>& makerOf(CookieType type) { return makers[type == 'M' ? 1 : 0]; }

} // namespace

namespace cutroom {

BinMaker installBinMaker(CookieType type, BinMaker maker) noexcept {
    return type == 'G' || type == 'M' ? makerOf(type).exchange(maker) : nullptr;
}

} // namespace cutroom

BinManager& BinManager::instance() { return single<BinManager>(); }

// The documents come first, so that they are there when bins are read and go after them.
BinManager::BinManager() {
    DocumentManager& documents = DocumentManager::instance();
    registrations_.push_back(documents.registerNotification(
        makeCallback(this, &BinManager::handleDocumentModifications), documents.changeMsgType()));
    registrations_.push_back(cutroom::Savers::add(
        {"bins", [this] { return anyDirty(); }, [this] { return saveAll(); }}));
    cutroom::installBinImporter(&BinManager::importAssets);
    setupFromCacheFile();
}

BinManager::~BinManager() {
    cutroom::installBinImporter(nullptr);
    registrations_.clear();
}

// --- files ---------------------------------------------------------------------------------------

LightweightString<wchar_t> BinManager::getBinsCacheFilename() {
    return cutroom::toWide(cutroom::binsCachePath());
}

Cookie BinManager::getCookieFromFileName(const LightweightString<wchar_t>& name) {
    return KVContainerFile::getCookieFromFilename(name);
}

std::string BinManager::getFileTypeFromID(const Cookie& bin) {
    return isBinCookie(bin) ? cutroom::kBinExtension : std::string();
}

Kv::Ptr<BinData> BinManager::load(const Cookie& bin) {
    const cutroom::BinMaker maker = makerOf(bin.type()).load();
    if (!maker)
        return Kv::makePtr<BinData>(bin);
    Kv::Ptr<BinData> made = maker();
    made->setID(bin);
    if (const Status read = made->load(bin); !read && read.code() != StatusCode::notFound)
        LogBoth("%s\n", read.text().c_str());
    return made;
}

// --- bins ----------------------------------------------------------------------------------------

Kv::Ptr<BinData> BinManager::findLoaded(const Cookie& bin) const {
    const CriticalSection::Lock held(mapsLock_);
    const auto entry = loaded_.find(bin);
    return entry == loaded_.end() ? Kv::Ptr<BinData>() : entry->second.bin;
}

BinManager::LoadedBins BinManager::loadedBins() const {
    LoadedBins bins;
    const CriticalSection::Lock held(mapsLock_);
    bins.reserve(loaded_.size());
    for (const auto& [id, entry] : loaded_)
        bins.push_back(entry.bin);
    return bins;
}

Kv::Ptr<BinData> BinManager::enter(const Kv::Ptr<BinData>& bin, bool& entered) {
    const Cookie id = bin->getID(), project = CurrentProject::getCookie();
    const CriticalSection::Lock held(mapsLock_);
    const auto [entry, isNew] = loaded_.try_emplace(id, Loaded{bin, project});
    entered = isNew;
    if (isNew)
        summaries_[id].id = id; // the rest is read when it is asked for
    return entry->second.bin;
}

// The file is read without a lock: of two threads that ask at once the first to return decides. A
// thread whose file was removed while it read looks again.
Kv::Ptr<BinData> BinManager::getData(const Cookie& bin) {
    while (isBinCookie(bin)) {
        std::uint64_t removals = 0;
        {
            const CriticalSection::Lock held(mapsLock_);
            if (const auto entry = loaded_.find(bin); entry != loaded_.end())
                return entry->second.bin;
            removals = removals_;
        }
        const std::string path = pathOf(bin);
        if (path.empty() || !cutroom::fileExists(path))
            return {};
        const Kv::Ptr<BinData> read = load(bin);
        const Cookie project = CurrentProject::getCookie();
        const bool sound = read->valid();
        if (!sound && !cutroom::fileExists(path))
            continue; // it has gone meanwhile
        const CriticalSection::Lock held(mapsLock_);
        if (removals != removals_)
            continue;
        const auto [entry, isNew] = loaded_.try_emplace(bin, Loaded{read, project});
        summaries_[bin].id = bin;
        if (isNew && !sound)
            entry->second.summarised = entry->second.changes; // it knows less than the summary
        return entry->second.bin;
    }
    return {};
}

Kv::Ptr<BinData> BinManager::newBin(const Cookie& bin) {
    if (bin.valid()) {
        if (!isBinCookie(bin))
            return {};
        if (Kv::Ptr<BinData> known = getData(bin))
            return known;
    }
    const cutroom::BinMaker maker = makerOf(bin.valid() ? bin.type() : 'G').load();
    const Kv::Ptr<BinData> made = maker ? maker() : Kv::makePtr<BinData>();
    if (bin.valid())
        made->setID(bin);
    made->beginModifications();
    made->setViewType(getDefaultGalleryView());
    made->clearModifications();
    Kv::Ptr<BinData> managed = addBin(made);
    made->endModifications();
    return managed;
}

Kv::Ptr<BinData> BinManager::addBin(Kv::Ptr<BinData> bin, LightweightString<char> reason) {
    if (!bin || !isBinCookie(bin->getID()))
        return {};
    bool entered = false;
    Kv::Ptr<BinData> managed = enter(bin, entered);
    if (!entered)
        return managed;
    const std::string path = pathOf(bin->getID());
    if (!path.empty() && cutroom::fileExists(path)) {
        ContainerBase::Modifications added;
        added.add(ContainerBase::Modification(ContainerBase::kModCreated));
        issueNotification(Kv::makePtr<ContainerNotice>(bin->getID(), added, std::move(reason)));
        return managed;
    }
    bin->beginModifications();
    bin->addModifications(ContainerBase::kModCreated);
    bin->endModifications(std::move(reason));
    return managed;
}

bool BinManager::isManaged(const Cookie& bin) const { return static_cast<bool>(findLoaded(bin)); }
