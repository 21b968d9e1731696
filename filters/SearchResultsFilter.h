// `SearchResultsFilter`: the project filter that keeps the bins of past searches.
//
//   groups/Filters/Search/Search.filter      the results, in order (docs/formats/filter.md)
//   groups/Filters/Search/<name>.criteria    a dynamic bin each (docs/formats/criteria.md)
#pragma once

#include "filters/ProjectFilterBase.h"
#include "filters/ProjectSearch.h"
#include "filters/SearchBin.h"

#include <atomic>
#include <map>
#include <set>
#include <string>
#include <vector>

// Owned by `ProjectFilterManager`. Looking is for any thread, as `ProjectFilterBase`; what adds,
// removes or saves writes files at once, holds a lock like that of a manager's `saveAll`, and is
// not to be called by a listener of a container. Each of them tells through the manager: a record
// of 384 (128, 256) or 640 (128, 512) with the bins concerned, in a notice of no container.
class CUTROOM_API SearchResultsFilter final : public ProjectFilterBase {
public:
    // Loads "Search.filter", then makes a dynamic bin of each criteria file. A file that cannot be
    // read is logged, left out and remembered (`getDamaged`).
    SearchResultsFilter();
    ~SearchResultsFilter() override;

    // The cookie of the filter, the same in every project.
    static Cookie fixedID() noexcept;
    // The folder; empty without a project.
    static LightweightString<wchar_t> getFolder();

    eResultsType getResultsType() const override;
    LightweightString<wchar_t> getDescription() const override;
    // Written with the next save.
    void setVisibility(eVisibility visibility) override;

    // Performs the search and keeps its bin: as it is now, or (`dynamic`) with its criteria in a
    // file. Empty, and nothing changes, when it cannot be saved (logged); in a project that is open
    // for reading only it is kept until the close.
    Kv::Ptr<BinData> add(const ProjectSearch::Criteria& criteria, bool dynamic);
    // Keeps a copy of the items of any bin; the bin itself when it is here already.
    Kv::Ptr<BinData> add(const Kv::Ptr<BinData>& results) override;
    // Keeps the criteria under a name, in place of those of that name. `wrongUsage` for a name that
    // cannot be a file's: empty, longer than 200 bytes, with a slash or control character, or one
    // that begins with a point.
    cutroom::Result<Kv::Ptr<BinData>> saveCriteria(const LightweightString<wchar_t>& name,
                                                   const ProjectSearch::Criteria& criteria);
    // False when it is not here or the change cannot be saved. The criteria file of a dynamic bin
    // goes, its content stays as ".bak".
    bool remove(const Kv::Ptr<BinData>& bin) override;
    void remove(const Bins& bins) override;
    void clear() override;

    // Brings the dynamic bins into line with the files: new ones come, those without a file go,
    // changed ones are searched anew.
    void update();

    // Kept results or the visibility have changed since they were saved.
    bool anyDirty() const;
    cutroom::Status save();
    // What is wrong with the files that could not be read.
    std::vector<cutroom::Status> getDamaged() const;
    // Called by the manager when the project closes: a filter that is still held afterwards writes
    // no files, since those would be another project's. User-interface thread.
    void leaveProject();

protected:
    eVisibility getDefaultVisibility() const override;

private:
    using SearchBins = std::vector<Kv::Ptr<SearchBin>>;

    bool isOpen() const; // the project that it was made for is open
    bool isKept() const; // and its files may be written
    Kv::Ptr<BinData> keep(const Kv::Ptr<SearchBin>& bin);
    SearchBins ours(const Bins& bins) const;
    Kv::Ptr<SearchBin> dynamicBin(const Cookie& id) const;
    cutroom::Status drop(const SearchBins& bins) CUTROOM_REQUIRES(saving_);
    static bool criteriaFileExists(const LightweightString<wchar_t>& name);
    // Its file is that of another name: the disk takes small and capital letters for the same.
    static bool isNameOfAnother(const LightweightString<wchar_t>& name);
    std::wstring freeName(const LightweightString<wchar_t>& wanted) const CUTROOM_REQUIRES(saving_);
    void tell(unsigned kind, const CookieVec& bins) const;

    void loadList() CUTROOM_REQUIRES(saving_);
    void putListRight() CUTROOM_REQUIRES(saving_);
    // Makes dynamic bins of new criteria files, drops those without a file.
    void followFiles(CookieVec& added, CookieVec& removed) CUTROOM_REQUIRES(saving_);
    void followFile(const std::string& file, std::set<Cookie>& present, CookieVec& added)
        CUTROOM_REQUIRES(saving_);
    void noteDamage(const std::string& file, const cutroom::Status& status)
        CUTROOM_REQUIRES(saving_);
    cutroom::Status makeRoom(const std::string& file) CUTROOM_REQUIRES(saving_);
    // Writes the list, one bin's criteria with it, and removes the criteria of others: all or none.
    cutroom::Status saveList(const SearchBin* withCriteria, const SearchBins& going = {})
        CUTROOM_REQUIRES(saving_);

    // Held while files are read or written.
    mutable CriticalSection saving_{LockRank::saveAll};
    std::map<std::string, cutroom::Status> damaged_ CUTROOM_GUARDED_BY(saving_); // by file
    std::atomic<bool> visibilityChanged_{false};
    std::atomic<bool> left_{false}; // the project has closed
    Kv::Ptr<Guard> saver_;
};
