// `BinManager`: the single owner of the project's bins and groups of bins.
//
//   groups/<cookie>.bin            the bins
//   groups/<project cookie>.odb    the bins cache: a summary of each (docs/formats/bins-cache.md)
//
// Any thread may call, with two restrictions that come from the order of the locks
// (docs/threads.md): nothing is asked under a container's lock as a reader, and what reads or
// writes all files (saveAll, destroy, reInit) is not called by a listener of a container. Look-ups
// of one cookie give one object, whichever thread asks. Project events arrive on the
// user-interface thread.
//
// Listeners of `changeMsgType()` are given a `ContainerNotice`, on the thread that made the change,
// under the change lock: `changed` for a bin, made, added or changed; `destroyed`, `saved`,
// `reset`.
#pragma once

#include "bins/AssetReference.h"
#include "bins/BinData.h"
#include "bins/BinSummary.h"
#include "bins/ContainerManagerBase.h"
#include "export/iAssetMetadataExporter.h"
#include "platform/base/Status.h"

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

class CUTROOM_API BinManager final : public ContainerManagerBase {
public:
    using BinSummary = ::BinSummary;

    // Made at the first call, best before a project is opened; sets itself up at once when one is
    // open.
    static BinManager& instance();

    // --- bins ----------------------------------------------------------------------------------
    // The bin, loaded from its file at the first request. A file that cannot be read gives a bin
    // that is not `valid`; without a file (and for what is no bin's cookie) empty.
    Kv::Ptr<BinData> getData(const Cookie& bin);
    // A new, empty bin in the default gallery view, put under management; under a fresh cookie when
    // none is given. When a bin has that cookie already, gives that bin; empty when the cookie is
    // not of a bin's kind ('G', 'M').
    Kv::Ptr<BinData> newBin(const Cookie& bin = {});
    // Puts a bin under management, and gives the one managed under its cookie: that one, or another
    // that was there before. One without a file is recorded as created, with that reason, and
    // saved with the next `saveAll`. Empty for no bin.
    Kv::Ptr<BinData> addBin(Kv::Ptr<BinData> bin, LightweightString<char> reason = {});
    // Tells whether the bin is in memory.
    bool isManaged(const Cookie& bin) const;
    // Removes the bin's file (it stays as ".bak"), forgets the bin, takes it out of the bins that
    // hold it, and tells. `notFound` for a bin that is not known; on failure everything stays. The
    // object lives on with those who hold it.
    cutroom::Status destroy(const Cookie& bin, const LightweightString<char>& reason);
    // Reads a loaded bin again from its file: what was not saved is lost. The bin tells 768 with
    // the reason "reload", and is not dirty. `notFound` when it is not loaded, or has no file yet:
    // then it stays as it is. A file that cannot be read gives why, and nothing is told.
    cutroom::Status reload(const Cookie& bin);

    // --- saving --------------------------------------------------------------------------------
    // Writes every dirty bin as one group: all or none, with few flushes. Then tells `saved`,
    // whether any was dirty or not. On failure all stay dirty and nothing is told; what changes
    // meanwhile stays dirty. A bin whose file must not be replaced, since a later version wrote it,
    // does not keep the others from being written: it stays dirty, and its failure is given.
    // Without a project bins live in memory only, until the next one is entered: nothing is
    // written, nothing fails.
    cutroom::Status saveAll();
    // Tells whether any loaded bin is dirty.
    bool anyDirty() const;

    // --- summaries -----------------------------------------------------------------------------
    static BinSummary getSummary(const BinData& bin) { return BinSummary(bin); }
    // Invalid when the bin is not known.
    BinSummary getSummary(const Cookie& bin);
    // Puts the summaries of all bins of the project, loaded or not, in place of what is in `bins`.
    void getAllBins(std::map<Cookie, BinSummary>& bins);
    // The bins whose children hold the bin, in the order of the cookies. Opens none.
    CookieVec findBinsContainingBin(const Cookie& bin);
    // The bins that hold the asset, in the order of the cookies. Loads those not loaded yet that
    // hold any asset of its kind.
    std::vector<Kv::Ptr<BinData>> findBinsContainingLog(const Cookie& asset);

    // --- what it is told -----------------------------------------------------------------------
    // By every bin that changes, under its lock: its summary is read again when it is asked for
    // next, and the listeners are told once.
    void handleBinModification(const Cookie& bin, const ContainerBase::Modifications& changes,
                               LightweightString<char> reason);
    // All three are passed to the loaded bins.
    void handleLogsDeletion(const CookieVec& logs, const LightweightString<char>& reason) override;
    void handleLogsModification(const std::vector<EditManager::Modification>& changes) override;
    void handleDocumentModifications(const NotifyMsg& message);
    // Sets up for the project.
    void handleProjectEntry() override;
    // Saves, writes the cache where it is out of date, and forgets all bins. The close of the
    // project gives what failed (`cutroom::Savers`).
    void handleProjectExit() override;
    // Sets up again for the current project: saves, reads all summaries anew, and drops every
    // loaded bin that nobody else holds and that is not dirty. Tells `reset`.
    void reInit();

    // --- metadata exporters --------------------------------------------------------------------
    // Appends; one of the same name is replaced. Null is ignored.
    void registerMetadataExporter(Kv::Ptr<iAssetMetadataExporter> exporter);
    // By the name of its format; unknown ones are ignored.
    void deRegisterMetadataExporter(const LightweightString<wchar_t>& name);
    // In the order of registration.
    std::vector<Kv::Ptr<iAssetMetadataExporter>> getMetadataExporters() const;

private:
    friend class cutroom::ProcessSingleton<BinManager>;

    // A bin in memory. Its summary is up to date when `summarised` equals `changes`.
    struct Loaded {
        Kv::Ptr<BinData> bin;
        Cookie project; // the one open when the bin was loaded; invalid: none was
        std::uint64_t changes = 1;
        std::uint64_t summarised = 0; // the count of changes at which the summary was read
    };
    struct Exporter {
        LightweightString<wchar_t> name;
        Kv::Ptr<iAssetMetadataExporter> exporter;
    };
    using LoadedBins = std::vector<Kv::Ptr<BinData>>;

    BinManager();
    ~BinManager() override;

    static LightweightString<wchar_t> getBinsCacheFilename();
    static Cookie getCookieFromFileName(const LightweightString<wchar_t>& name);
    // The extension of the files of such a cookie; empty for what is no bin's.
    static std::string getFileTypeFromID(const Cookie& bin);
    static Kv::Ptr<BinData> load(const Cookie& bin);
    static bool importAssets(const LightweightVector<AssetReference>& assets, const Cookie& bin);

    // Enters the bin, or finds the one loaded under its cookie; `entered` tells which.
    Kv::Ptr<BinData> enter(const Kv::Ptr<BinData>& bin, bool& entered);
    Kv::Ptr<BinData> findLoaded(const Cookie& bin) const;
    LoadedBins loadedBins() const;
    bool isKnown(const Cookie& bin) const;
    void forget(const Cookie& bin);
    void forgetAll();
    // While a project is open, forgets the bins that were loaded under another one, or under none.
    void forgetOthers();

    // A loaded bin has changed.
    void noteChanged(const Cookie& bin);
    // Stores the summary of a bin as it is now. Takes the bin's lock.
    void summarise(const Cookie& id, const Loaded& seen);
    // The same for all loaded bins that have changed.
    void refreshSummaries();

    // `leftOut` tells why a bin was left out, when one was.
    cutroom::Status saveDirty(cutroom::Status& leftOut) CUTROOM_REQUIRES(saving_);
    cutroom::Status removeFile(const Cookie& bin) CUTROOM_REQUIRES(saving_);
    void setupFromCacheFile();
    cutroom::Status writeBinsCacheFile() CUTROOM_REQUIRES(saving_);
    cutroom::Status updateBinsCacheFile() CUTROOM_REQUIRES(saving_);

    // Held while all files are written, removed or read again.
    CriticalSection saving_{LockRank::saveAll};
    std::unordered_map<Cookie, Loaded> loaded_ CUTROOM_GUARDED_BY(mapsLock_);
    cutroom::BinSummaries summaries_ CUTROOM_GUARDED_BY(mapsLock_);
    // Counts removals of bins and of assets: a load during which it changes begins again.
    std::uint64_t removals_ CUTROOM_GUARDED_BY(mapsLock_) = 0;
    // The cache on the disk says what `summaries_` does.
    bool cacheIsCurrent_ CUTROOM_GUARDED_BY(mapsLock_) = true;
    std::vector<Exporter> exporters_ CUTROOM_GUARDED_BY(mapsLock_);
    std::vector<Kv::Ptr<Guard>> registrations_;
};

namespace cutroom {

// Makes an empty bin object for cookies of one kind; the caller sets its id and contents.
using BinMaker = Kv::Ptr<BinData> (*)();
// Has bins of that kind made by `maker` (null: as plain bins), for folders that lie higher and have
// bins of their own; gives the maker before. Any thread.
CUTROOM_API BinMaker installBinMaker(CookieType type, BinMaker maker) noexcept;

} // namespace cutroom
