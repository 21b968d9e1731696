// `ProjectFilterManager`: the single owner of the open project's filters.
//
//   system filters   everything, documents, images, logs, recent logs, sub-clips and constituents
//                    of the current edit, search results, one for each tag
//   user filters     groups/Filters/<cookie>.filter (docs/formats/filter.md)
//
// Empty while no project is open. Any thread may call, but not under the lock of a container that
// it only reads; what reads or writes files says so, and is not to be called by a listener of a
// container. The list has a reader/writer lock; a writer takes the process's change lock first.
// Listeners of `changeMsgType()` are given a `ContainerNotice` on the thread that made the change,
// under both locks: they may ask for filters and must not make, change or destroy any. It is
// `reset` when a project comes or goes, else `changed`; its container is the result bin that
// changed, or invalid, and then the records name filters (of the search results: their bins):
//
//   130 (2, 128)          made              640 (128, 512)   gone
//   896 (128, 256, 512)   has other bins    160 (32, 128)    visibility or name changed
#pragma once

#include "bins/ContainerManagerBase.h"
#include "bins/ContainerNotice.h"
#include "filters/FieldIndex.h"
#include "filters/FilterBinData.h"
#include "filters/ProjectSearch.h"
#include "filters/SetOperation.h"
#include "filters/UserFilter.h"
#include "filters/iProjectFilter.h"
#include "platform/base/Annotations.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace cutroom {
class FilterFollower;
class UserFilterFiles;
} // namespace cutroom
class EditConstituentsFilter;
class SearchResultsFilter;
class SubClipsFilter;

class CUTROOM_API ProjectFilterManager final : public ContainerManagerBase {
public:
    using FilterPtr = Kv::Ptr<iProjectFilter>;
    using Filters = std::vector<FilterPtr>;

    // Made at the first call, on the user-interface thread and by no listener of a container, best
    // before a project is opened; sets itself up at once when one is open.
    static ProjectFilterManager& instance();

    // --- finding: empty when there is none -----------------------------------------------------
    // System filters first, those of the tags last among them, then the user's in the order in
    // which they were made or read. Which assets have tags is read once: when the list is first
    // asked for, or when a filter is asked for that is not among the others.
    Filters getAllFilters() const;
    // The first of that name.
    FilterPtr getFilterByName(const LightweightString<wchar_t>& name) const;
    FilterPtr getFilter(const Cookie& filter) const;
    // The user's filters only, in the order of the list. Does not read which assets have tags.
    std::vector<Kv::Ptr<UserFilter>> getUserFilters() const;
    // The filter that presents the bin.
    FilterPtr findFilterResponsibleFor(const Cookie& bin) const;
    FilterPtr findFilterResponsibleFor(const Kv::Ptr<BinData>& bin) const;
    // The result bin of that cookie, filled.
    Kv::Ptr<BinData> getFilterResults(const Cookie& bin) const;

    // --- the user's filters: written at once, crash-safely ---------------------------------------
    // Saves and appends a filter over the bins, over copies of those that others present; tells
    // 130. Empty, and nothing is told, for a null bin or when it cannot be saved (logged).
    FilterPtr createFilter(const FilterBins& bins, const LightweightString<wchar_t>& name,
                           iProjectFilter::eVisibility visibility = iProjectFilter::kAlways);
    // Replaces its bins, saves and tells 896. False, and it stays as it was, when it is not in the
    // list, for a null bin or when it cannot be saved (logged).
    bool updateFilter(const Kv::Ptr<UserFilter>& filter, const FilterBins& bins);
    // Removes the filter and its file (it stays as ".bak"), and tells 640. False for a system
    // filter, one that is not in the list, or when the file cannot be removed (logged).
    bool destroyFilter(const FilterPtr& filter);
    // Gives another name, saves and tells 160. False, and it stays as it was, for an empty name,
    // when it is not in the list or cannot be saved (logged).
    bool renameFilter(const Kv::Ptr<UserFilter>& filter, const LightweightString<wchar_t>& name);
    // Sets and, for one of the user's, saves the visibility, and tells 160. False, and it stays as
    // it was, when it is not in the list or cannot be saved (logged).
    bool setVisibility(const FilterPtr& filter, iProjectFilter::eVisibility visibility);

    // --- bins ----------------------------------------------------------------------------------
    // A result bin from its form in a filter file; empty for what is none.
    Kv::Ptr<FilterBinData> createFilterBinData(const JSON::Element& object) const;
    // The same with the reason of a refusal; `file` is for the message.
    cutroom::Result<Kv::Ptr<FilterBinData>> createFilterBinData(const JSON::Element& object,
                                                                const std::string& file) const;
    // A new bin under the bin manager, not saved yet, with what the operation leaves of the
    // filter's bins. Empty for no filter.
    Kv::Ptr<BinData> makeBin(const FilterPtr& filter, eSetOperation operation,
                             const LightweightString<wchar_t>& name) const;
    // Performs a search, or takes results in, and keeps the bin among the search results; empty
    // without a project.
    Kv::Ptr<BinData> addSearch(const ProjectSearch::Criteria& criteria);
    Kv::Ptr<BinData> addSearchResults(const Kv::Ptr<BinData>& results);

    // --- telling ---------------------------------------------------------------------------------
    // Tells all listeners; `bin` is the container of the notice (none: the invalid cookie).
    void issueNotification(const ContainerBase::Modifications& changes,
                           const Kv::Ptr<BinData>& bin) const;
    using ContainerManagerBase::issueNotification;
    // The same for a bin of that cookie, with the reason.
    void issueNotification(const ContainerBase::Modifications& changes, const Cookie& bin,
                           LightweightString<char> reason) const;

    // --- files -----------------------------------------------------------------------------------
    // Brings the user's filters into line with the files: those without one go, those that are new
    // are read. Tells all that in one notice, when there is any. Also the debug command
    // "ProjectFilterManager reInit() test".
    void reInit();
    // Writes the user's filters that changed: all or none.
    cutroom::Status saveAll();
    bool anyDirty() const;
    // Writes the filter that presents the bin; `notFound` when no user filter does.
    cutroom::Status saveFilterOf(const Cookie& bin);
    // What is wrong with the filter files that could not be read.
    std::vector<cutroom::Status> getDamaged() const;
    // The project's groups directory joined with "Filters"; empty without a project.
    static LightweightString<wchar_t> getFiltersFolder();

    // --- what it is told: user-interface thread --------------------------------------------------
    void handleProjectEntry() override;
    void handleProjectExit() override;
    // Both are passed to the filters that have been looked at.
    void handleLogsModification(const std::vector<EditManager::Modification>& changes) override;
    void handleLogsDeletion(const CookieVec& logs, const LightweightString<char>& reason) override;
    // Of the document manager; any thread.
    void handleDocumentModifications(const NotifyMsg& message);

private:
    friend class cutroom::ProcessSingleton<ProjectFilterManager>;
    class Writer;

    ProjectFilterManager();
    ~ProjectFilterManager() override;

    // Sets up for the open project, if it is not; on the user-interface thread.
    void settle();
    void buildSystemFilters();
    void buildTagFilters() const;
    void addUserFilters();
    CookieVec getPersistedUserFilters() const CUTROOM_REQUIRES(filesLock_);

    Filters list() const;
    bool isListed(const FilterPtr& filter) const;
    Kv::Ptr<SearchResultsFilter> getSearchResults() const;
    std::shared_ptr<cutroom::FieldIndex> tagIndex() const;
    void insertTagFilter(const std::string& tag) const CUTROOM_REQUIRES(listLock_);
    void updateTagFilters(const cutroom::FieldIndex::Changes& tags);
    template <class Function> void forEachResult(const Function& function) const;
    void assetsChanged(const CookieVec& assets);
    void followMachines();
    void tell(unsigned type, const Cookie& filter) const;

    // Guards the list. Its writer holds the change lock, and tells while it holds both.
    mutable SharedLock listLock_{LockRank::notifier};
    mutable Filters filters_ CUTROOM_GUARDED_BY(listLock_);
    Kv::Ptr<SearchResultsFilter> searches_ CUTROOM_GUARDED_BY(listLock_);
    std::shared_ptr<cutroom::FieldIndex> tags_ CUTROOM_GUARDED_BY(listLock_); // null: no project
    mutable std::atomic<bool> tagsMade_{false}; // changed under the list's lock
    std::atomic<bool> entered_{false};
    // User-interface thread.
    Kv::Ptr<SubClipsFilter> subClips_;
    Kv::Ptr<EditConstituentsFilter> constituents_;
    // Held while the user's filters are made, changed, read and written.
    mutable CriticalSection filesLock_{LockRank::saveAll};
    const std::unique_ptr<cutroom::UserFilterFiles> files_;
    std::unique_ptr<cutroom::FilterFollower> follower_;
    std::vector<Kv::Ptr<Guard>> registrations_;
};
