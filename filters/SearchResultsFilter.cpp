// What the filter keeps, and its changes; SearchResultsFiles.cpp reads and writes.
#include "filters/SearchResultsFilter.h"

#include "filters/ProjectFilterManager.h"
#include "filters/SearchResultsFiles.h"
#include "platform/base/Log.h"
#include "platform/base/Strings.h"
#include "platform/host/StringTable.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/Savers.h"

#include <algorithm>
#include <set>
#include <utility>

using cutroom::Result;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

bool logged(const Status& status) {
    if (!status)
        LogBoth("%s\n", status.text().c_str());
    return status.ok();
}

Kv::Ptr<FilterBinData> makeSearchBin() { return Kv::makePtr<SearchBin>(); }

} // namespace

SearchResultsFilter::SearchResultsFilter()
    : ProjectFilterBase(fixedID(), resourceStrW(cutroom::kResSearchResults)) {
    cutroom::installFilterBinMaker(SearchBin().getTypeID(), &makeSearchBin);
    {
        const CriticalSection::Lock lock(saving_);
        loadList();
        CookieVec added;
        CookieVec removed;
        followFiles(added, removed);
    }
    saver_ = cutroom::Savers::add(
        {"search results", [this] { return anyDirty(); }, [this] { return save(); }});
}

SearchResultsFilter::~SearchResultsFilter() = default;

void SearchResultsFilter::leaveProject() {
    const CriticalSection::Lock lock(saving_);
    left_ = true;
    saver_.reset();
}

bool SearchResultsFilter::isOpen() const { return !left_ && CurrentProject::isOpen(); }

// In a project that is open for reading only, changes last until its close.
bool SearchResultsFilter::isKept() const { return isOpen() && !CurrentProject::isReadOnly(); }

Cookie SearchResultsFilter::fixedID() noexcept {
    return Cookie('F', cutroom::fixedFilterBinID("search results").id());
}

iProjectFilter::eResultsType SearchResultsFilter::getResultsType() const { return kSearchResults; }
iProjectFilter::eVisibility SearchResultsFilter::getDefaultVisibility() const { return kOptional; }

LightweightString<wchar_t> SearchResultsFilter::getDescription() const {
    return resourceStrW(cutroom::kResSearchResults);
}

void SearchResultsFilter::setVisibility(eVisibility visibility) {
    ProjectFilterBase::setVisibility(visibility);
    visibilityChanged_ = true;
    cutroom::Savers::noteChange();
}

void SearchResultsFilter::tell(unsigned kind, const CookieVec& bins) const {
    if (bins.empty())
        return;
    ContainerBase::Modification change(kind | ContainerBase::kModUncounted);
    change.add(bins);
    ContainerBase::Modifications changes;
    changes.add(std::move(change));
    ProjectFilterManager::instance().issueNotification(changes, Kv::Ptr<BinData>());
}

// --- adding --------------------------------------------------------------------------------------

Kv::Ptr<BinData> SearchResultsFilter::add(const ProjectSearch::Criteria& criteria, bool dynamic) {
    if (!isOpen())
        return nullptr;
    if (!dynamic) {
        const Kv::Ptr<BinData> results = ProjectSearch::instance().perform(criteria);
        return results ? keep(Kv::makePtr<SearchBin>(*results, criteria)) : nullptr;
    }
    const CriticalSection::Lock lock(saving_);
    const auto name = freeName(ProjectSearch::makeName(criteria, false));
    if (!isKept())
        return keep(Kv::makePtr<SearchBin>(name, criteria));
    const auto bin = saveCriteria(name, criteria);
    return logged(bin.status()) ? *bin : nullptr;
}

Kv::Ptr<BinData> SearchResultsFilter::add(const Kv::Ptr<BinData>& results) {
    if (!results || !isOpen())
        return nullptr;
    if (!ours({results}).empty())
        return results;
    return keep(Kv::makePtr<SearchBin>(*results));
}

Kv::Ptr<BinData> SearchResultsFilter::keep(const Kv::Ptr<SearchBin>& bin) {
    const CriticalSection::Lock lock(saving_);
    appendResult(bin);
    if (isKept() && !logged(saveList(nullptr))) {
        removeResult(bin);
        return nullptr;
    }
    bin->fill();
    tell(ContainerBase::kModItemsAdded, {bin->getID()});
    return bin;
}

Result<Kv::Ptr<BinData>>
SearchResultsFilter::saveCriteria(const LightweightString<wchar_t>& name,
                                  const ProjectSearch::Criteria& criteria) {
    if (Status status = cutroom::checkCriteriaName(name); !status)
        return status;
    if (!isKept())
        return Status(StatusCode::failed, cutroom::toUtf8(name),
                      "criteria are kept in a project that is open for writing");
    const CriticalSection::Lock lock(saving_);
    Kv::Ptr<SearchBin> bin = dynamicBin(SearchBin::fixedID(name));
    const bool isNew = !bin;
    if (isNew && isNameOfAnother(name))
        return Status(StatusCode::wrongUsage, cutroom::toUtf8(name),
                      "on this disk it is the name of other criteria, in small or capital letters");
    if (isNew) {
        bin = Kv::makePtr<SearchBin>(name, criteria);
        appendResult(bin);
    }
    const auto before = bin->getCriteria();
    bin->setCriteria(criteria);
    if (Status status = saveList(bin.get()); !status) {
        if (isNew)
            removeResult(bin);
        else
            bin->setCriteria(*before);
        return status;
    }
    bin->fill();
    if (isNew)
        tell(ContainerBase::kModItemsAdded, {bin->getID()});
    return Kv::Ptr<BinData>(bin);
}

// --- removing ------------------------------------------------------------------------------------

SearchResultsFilter::SearchBins SearchResultsFilter::ours(const Bins& bins) const {
    SearchBins found;
    for (const Kv::Ptr<FilterBinData>& result : peekResults()) {
        const bool isAsked = std::any_of(bins.begin(), bins.end(), [&](const auto& bin) {
            return bin && result->getID() == bin->getID();
        });
        auto* const search = dynamic_cast<SearchBin*>(result.get());
        if (isAsked && search)
            found.emplace_back(search);
    }
    return found;
}

Kv::Ptr<SearchBin> SearchResultsFilter::dynamicBin(const Cookie& id) const {
    for (const Kv::Ptr<FilterBinData>& result : peekResults())
        if (result->getID() == id && result->isDynamic())
            return Kv::Ptr<SearchBin>(dynamic_cast<SearchBin*>(result.get()));
    return nullptr;
}

bool SearchResultsFilter::remove(const Kv::Ptr<BinData>& bin) {
    const CriticalSection::Lock lock(saving_);
    const SearchBins going = ours({bin});
    return !going.empty() && logged(drop(going));
}

void SearchResultsFilter::remove(const Bins& bins) {
    const CriticalSection::Lock lock(saving_);
    logged(drop(ours(bins)));
}

void SearchResultsFilter::clear() {
    const CriticalSection::Lock lock(saving_);
    SearchBins all;
    for (const Kv::Ptr<FilterBinData>& result : peekResults())
        if (auto* const search = dynamic_cast<SearchBin*>(result.get()))
            all.emplace_back(search);
    logged(drop(all));
}

Status SearchResultsFilter::drop(const SearchBins& bins) {
    const FilterBins before = peekResults();
    CookieVec gone;
    for (const Kv::Ptr<SearchBin>& bin : bins) {
        removeResult(bin);
        gone.push_back(bin->getID());
    }
    if (gone.empty())
        return {};
    if (isKept()) {
        if (Status status = saveList(nullptr, bins); !status) {
            setResults(before);
            return status;
        }
    }
    tell(ContainerBase::kModItemsRemoved, gone);
    return {};
}

// --- following the files -------------------------------------------------------------------------

void SearchResultsFilter::update() {
    const CriticalSection::Lock lock(saving_);
    if (!isOpen())
        return;
    CookieVec added;
    CookieVec removed;
    followFiles(added, removed);
    tell(ContainerBase::kModItemsAdded, added);
    tell(ContainerBase::kModItemsRemoved, removed);
}

bool SearchResultsFilter::anyDirty() const {
    const FilterBins results = peekResults();
    return visibilityChanged_ || std::any_of(results.begin(), results.end(), [](const auto& bin) {
               return !bin->isDynamic() && bin->isDirty();
           });
}

Status SearchResultsFilter::save() {
    const CriticalSection::Lock lock(saving_);
    return anyDirty() && isKept() ? saveList(nullptr) : Status();
}

std::vector<Status> SearchResultsFilter::getDamaged() const {
    const CriticalSection::Lock lock(saving_);
    std::vector<Status> all;
    for (const auto& [file, status] : damaged_)
        all.push_back(status);
    return all;
}

// A name that no file and no dynamic bin has yet.
std::wstring SearchResultsFilter::freeName(const LightweightString<wchar_t>& wanted) const {
    const std::wstring plain = cutroom::plainCriteriaName(wanted);
    std::wstring name = plain;
    for (int number = 2; dynamicBin(SearchBin::fixedID(name)) || criteriaFileExists(name); ++number)
        name = plain + L' ' + std::to_wstring(number);
    return name;
}
