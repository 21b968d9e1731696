// The list, and the filters that the user makes.
#include "filters/ProjectFilterManager.h"

#include "bins/BinHandle.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "filters/DocumentBin.h"
#include "filters/EditConstituentsFilter.h"
#include "filters/FilterFollower.h"
#include "filters/ProjectFilterWriter.h"
#include "filters/SearchResultsFilter.h"
#include "filters/SubClipsFilter.h"
#include "filters/UserFilterFiles.h"
#include "platform/base/Log.h"
#include "platform/host/DebugCommands.h"
#include "platform/messaging/UiThread.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectPaths.h"
#include "platform/project/Savers.h"
#include "vob/VobManager.h"

#include <algorithm>
#include <utility>

using cutroom::Status;
using cutroom::StatusCode;

namespace {

constexpr char kReInitCommand[] = "ProjectFilterManager reInit() test";

Kv::Ptr<BinData> resolve(const Cookie& bin) {
    return ProjectFilterManager::instance().getFilterResults(bin);
}

// A bin that follows the project as `bin` does, as it would be read again, under a fresh cookie;
// empty for one that nobody can read.
Kv::Ptr<FilterBinData> followingCopy(const FilterBinData& bin) {
    JSON::Builder out;
    out.beginObject();
    bin.write(out);
    out.endObject();
    const auto object = JSON::Element::parse(out.text(), "bin");
    const auto copy = object ? cutroom::readFilterBin(**object, "bin") : object.status();
    if (!copy)
        return {};
    (*copy)->setID(newContainerCookie());
    return *copy;
}

// The bin that a user's filter presents for `bin`: that one, or a copy when another filter presents
// it or it cannot be made again when the filter's file is read. `present`: the bins of the user's
// filter so far.
Kv::Ptr<FilterBinData> own(const Kv::Ptr<FilterBinData>& bin, const FilterBins& present) {
    const bool isOwn = std::find(present.begin(), present.end(), bin) != present.end();
    const bool isReadAgain = !bin->isDynamic() || cutroom::hasFilterBinMaker(bin->getTypeID());
    if (isReadAgain && (isOwn || !bin->isPresented()))
        return bin;
    if (isReadAgain && bin->isDynamic())
        if (Kv::Ptr<FilterBinData> copy = followingCopy(*bin))
            return copy;
    bin->fill();
    return Kv::makePtr<FilterBinData>(std::as_const<BinData>(*bin));
}

bool anyNull(const FilterBins& bins) {
    return std::any_of(bins.begin(), bins.end(), [](const auto& bin) { return !bin; });
}

FilterBins ownAll(const FilterBins& bins, const FilterBins& present) {
    FilterBins owned;
    for (const Kv::Ptr<FilterBinData>& bin : bins)
        owned.push_back(own(bin, present));
    return owned;
}

Kv::Ptr<UserFilter> asUserFilter(const Kv::Ptr<iProjectFilter>& filter) {
    return Kv::Ptr<UserFilter>(dynamic_cast<UserFilter*>(filter.get()));
}

} // namespace

// --- making --------------------------------------------------------------------------------------

ProjectFilterManager& ProjectFilterManager::instance() {
    ProjectFilterManager& manager = single<ProjectFilterManager>();
    manager.settle();
    return manager;
}

// The managers that it asks are made first, so that they also outlive it.
ProjectFilterManager::ProjectFilterManager()
    : files_(std::make_unique<cutroom::UserFilterFiles>()) {
    (void)BinManager::instance();
    DocumentManager& documents = DocumentManager::instance();
    VobManager& vobs = VobManager::instance();
    follower_ = std::make_unique<cutroom::FilterFollower>(
        [this](const CookieVec& assets) { assetsChanged(assets); },
        [] {
            cutroom::postToUiThread([] {
                if (auto* manager = cutroom::ProcessSingleton<ProjectFilterManager>::find())
                    manager->follower_->catchUp();
            });
        });
    registrations_ = {documents.registerNotification(
                          makeCallback(this, &ProjectFilterManager::handleDocumentModifications),
                          documents.changeMsgType()),
                      cutroom::Savers::add(
                          {"filters", [this] { return anyDirty(); }, [this] { return saveAll(); }}),
                      cutroom::addDebugCommand(kReInitCommand, [this] { reInit(); })};
    for (const int role : {vobs.recordChangedMsgType(), vobs.sourceChangedMsgType()})
        registrations_.push_back(vobs.registerNotification(
            makeCallback<NotifyMsg>([this](const NotifyMsg&) { followMachines(); }), role));
    cutroom::installFilterBinMaker(
        "Documents", []() -> Kv::Ptr<FilterBinData> { return Kv::makePtr<DocumentBin>(); });
    cutroom::installFilterResultsResolver(&resolve);
}

ProjectFilterManager::~ProjectFilterManager() {
    cutroom::installFilterResultsResolver(nullptr);
    registrations_.clear();
    follower_.reset();
}

// --- finding -------------------------------------------------------------------------------------

ProjectFilterManager::Filters ProjectFilterManager::list() const {
    const SharedLock::Read lock(listLock_);
    return filters_;
}

ProjectFilterManager::Filters ProjectFilterManager::getAllFilters() const {
    buildTagFilters();
    follower_->catchUp();
    return list();
}

namespace {

template <class Test>
Kv::Ptr<iProjectFilter> firstOf(const ProjectFilterManager::Filters& filters, const Test& test) {
    const auto at = std::find_if(filters.begin(), filters.end(), test);
    return at == filters.end() ? Kv::Ptr<iProjectFilter>() : *at;
}

Kv::Ptr<FilterBinData> resultOf(const iProjectFilter& filter, const Cookie& bin) {
    const auto* base = dynamic_cast<const ProjectFilterBase*>(&filter);
    for (const Kv::Ptr<FilterBinData>& result : base ? base->peekResults() : filter.getResults())
        if (result->getID() == bin)
            return result;
    return {};
}

} // namespace

ProjectFilterManager::FilterPtr
ProjectFilterManager::getFilterByName(const LightweightString<wchar_t>& name) const {
    const auto isNamed = [&](const FilterPtr& one) { return one->getName() == name; };
    follower_->catchUp();
    const FilterPtr found = firstOf(list(), isNamed);
    const bool beforeTags = found && found->getCreator() != iProjectFilter::kUser;
    return beforeTags ? found : firstOf(getAllFilters(), isNamed);
}

ProjectFilterManager::FilterPtr ProjectFilterManager::getFilter(const Cookie& filter) const {
    const auto isIt = [&](const FilterPtr& one) { return one->getID() == filter; };
    follower_->catchUp();
    FilterPtr found = firstOf(list(), isIt);
    return found ? found : firstOf(getAllFilters(), isIt);
}

// The filters of tags, which may not have been made yet, present bins under fixed cookies only.
ProjectFilterManager::FilterPtr
ProjectFilterManager::findFilterResponsibleFor(const Cookie& bin) const {
    const auto presents = [&](const FilterPtr& one) {
        return static_cast<bool>(resultOf(*one, bin));
    };
    follower_->catchUp();
    FilterPtr found = firstOf(list(), presents);
    if (!found && cutroom::isFixedFilterBinID(bin))
        found = firstOf(getAllFilters(), presents);
    return found;
}

ProjectFilterManager::FilterPtr
ProjectFilterManager::findFilterResponsibleFor(const Kv::Ptr<BinData>& bin) const {
    return bin ? findFilterResponsibleFor(bin->getID()) : FilterPtr();
}

Kv::Ptr<BinData> ProjectFilterManager::getFilterResults(const Cookie& bin) const {
    const FilterPtr filter = findFilterResponsibleFor(bin);
    const Kv::Ptr<FilterBinData> result =
        filter ? resultOf(*filter, bin) : Kv::Ptr<FilterBinData>();
    if (result)
        result->fill();
    return result;
}

// --- the user's filters --------------------------------------------------------------------------

ProjectFilterManager::FilterPtr
ProjectFilterManager::createFilter(const FilterBins& bins, const LightweightString<wchar_t>& name,
                                   iProjectFilter::eVisibility visibility) {
    if (anyNull(bins))
        return {};
    auto filter = Kv::makePtr<UserFilter>(Cookie::make('F'), name, visibility, ownAll(bins, {}));
    const CriticalSection::Lock whole(filesLock_);
    if (const Status saved = files_->write({filter}); !saved) {
        LogBoth("%s\n", saved.text().c_str());
        return {};
    }
    filter->writePreference();
    const Writer lock(*this);
    filters_.push_back(filter);
    tell(ContainerBase::kModCreated | ContainerBase::kModUncounted, filter->getID());
    return filter;
}

bool ProjectFilterManager::updateFilter(const Kv::Ptr<UserFilter>& filter, const FilterBins& bins) {
    const CriticalSection::Lock whole(filesLock_);
    if (anyNull(bins) || !isListed(filter))
        return false;
    const FilterBins before = filter->peekResults();
    filter->setContents(ownAll(bins, before));
    if (const Status saved = files_->write({filter}); !saved) {
        LogBoth("%s\n", saved.text().c_str());
        filter->setContents(before);
        return false;
    }
    const Writer lock(*this);
    tell(ContainerBase::kModUncounted | ContainerBase::kModItemsAdded |
             ContainerBase::kModItemsRemoved,
         filter->getID());
    return true;
}

bool ProjectFilterManager::destroyFilter(const FilterPtr& filter) {
    const CriticalSection::Lock whole(filesLock_);
    if (!isListed(filter) || filter->getCreator() != iProjectFilter::kUser)
        return false;
    if (const Status removed = files_->remove(filter->getID()); !removed) {
        LogBoth("%s\n", removed.text().c_str());
        return false;
    }
    const Writer lock(*this);
    std::erase(filters_, filter);
    tell(ContainerBase::kModUncounted | ContainerBase::kModItemsRemoved, filter->getID());
    return true;
}

bool ProjectFilterManager::renameFilter(const Kv::Ptr<UserFilter>& filter,
                                        const LightweightString<wchar_t>& name) {
    const CriticalSection::Lock whole(filesLock_);
    if (name.empty() || !isListed(filter))
        return false;
    const auto before = filter->getName();
    if (before == name)
        return true;
    filter->rename(name);
    if (const Status saved = files_->write({filter}); !saved) {
        LogBoth("%s\n", saved.text().c_str());
        filter->rename(before);
        return false;
    }
    filter->writePreference();
    const Writer lock(*this);
    tell(ContainerBase::kModAttribute | ContainerBase::kModUncounted, filter->getID());
    return true;
}

bool ProjectFilterManager::setVisibility(const FilterPtr& filter,
                                         iProjectFilter::eVisibility visibility) {
    const CriticalSection::Lock whole(filesLock_);
    if (!isListed(filter))
        return false;
    const auto before = filter->getVisibility();
    if (before == visibility)
        return true;
    if (const Kv::Ptr<UserFilter> users = asUserFilter(filter)) {
        users->show(visibility);
        if (const Status saved = files_->write({users}); !saved) {
            LogBoth("%s\n", saved.text().c_str());
            users->show(before);
            return false;
        }
        users->writePreference();
    } else {
        filter->setVisibility(visibility);
    }
    const Writer lock(*this);
    tell(ContainerBase::kModAttribute | ContainerBase::kModUncounted, filter->getID());
    return true;
}

bool ProjectFilterManager::isListed(const FilterPtr& filter) const {
    const Filters all = list();
    return filter && std::find(all.begin(), all.end(), filter) != all.end();
}

// --- bins ----------------------------------------------------------------------------------------

Kv::Ptr<FilterBinData>
ProjectFilterManager::createFilterBinData(const JSON::Element& object) const {
    auto bin = createFilterBinData(object, {});
    return bin ? *bin : Kv::Ptr<FilterBinData>();
}

cutroom::Result<Kv::Ptr<FilterBinData>>
ProjectFilterManager::createFilterBinData(const JSON::Element& object,
                                          const std::string& file) const {
    return cutroom::readFilterBin(object, file);
}

Kv::Ptr<BinData> ProjectFilterManager::makeBin(const FilterPtr& filter, eSetOperation operation,
                                               const LightweightString<wchar_t>& name) const {
    if (!filter)
        return {};
    const auto bin = Kv::makePtr<BinData>(name);
    bin->setContents(combine(filter->getBins(), operation));
    bin->resetSelections();
    return BinManager::instance().addBin(bin);
}

Kv::Ptr<BinData> ProjectFilterManager::addSearch(const ProjectSearch::Criteria& criteria) {
    const Kv::Ptr<SearchResultsFilter> searches = getSearchResults();
    return searches ? searches->add(criteria, false) : Kv::Ptr<BinData>();
}

Kv::Ptr<BinData> ProjectFilterManager::addSearchResults(const Kv::Ptr<BinData>& results) {
    const Kv::Ptr<SearchResultsFilter> searches = getSearchResults();
    return searches ? searches->add(results) : Kv::Ptr<BinData>();
}

Kv::Ptr<SearchResultsFilter> ProjectFilterManager::getSearchResults() const {
    const SharedLock::Read lock(listLock_);
    return searches_;
}

// --- telling -------------------------------------------------------------------------------------

void ProjectFilterManager::issueNotification(const ContainerBase::Modifications& changes,
                                             const Kv::Ptr<BinData>& bin) const {
    issueNotification(changes, bin ? bin->getID() : Cookie(), {});
}

void ProjectFilterManager::issueNotification(const ContainerBase::Modifications& changes,
                                             const Cookie& bin,
                                             LightweightString<char> reason) const {
    issueNotification(Kv::makePtr<ContainerNotice>(bin, changes, std::move(reason)));
}

void ProjectFilterManager::tell(unsigned type, const Cookie& filter) const {
    ContainerBase::Modification change(type);
    change.add(filter);
    ContainerBase::Modifications changes;
    changes.add(std::move(change));
    issueNotification(changes, Kv::Ptr<BinData>());
}

// --- files ---------------------------------------------------------------------------------------

LightweightString<wchar_t> ProjectFilterManager::getFiltersFolder() {
    const LightweightString<wchar_t> groups = getProjectGroupsDirectory();
    return groups.empty() ? groups : cutroom::joinPath(groups, L"Filters");
}

CookieVec ProjectFilterManager::getPersistedUserFilters() const {
    const auto listed = files_->list();
    if (!listed)
        LogBoth("%s\n", listed.status().text().c_str());
    return listed ? *listed : CookieVec();
}

std::vector<Kv::Ptr<UserFilter>> ProjectFilterManager::getUserFilters() const {
    std::vector<Kv::Ptr<UserFilter>> users;
    for (const FilterPtr& filter : list())
        if (Kv::Ptr<UserFilter> one = asUserFilter(filter))
            users.push_back(std::move(one));
    return users;
}

bool ProjectFilterManager::anyDirty() const {
    const auto users = getUserFilters();
    return std::any_of(users.begin(), users.end(), [](const auto& one) { return one->isDirty(); });
}

Status ProjectFilterManager::saveAll() {
    const CriticalSection::Lock whole(filesLock_);
    auto users = getUserFilters();
    std::erase_if(users, [](const auto& one) { return !one->isDirty(); });
    return users.empty() ? Status() : files_->write(users);
}

Status ProjectFilterManager::saveFilterOf(const Cookie& bin) {
    const Kv::Ptr<UserFilter> filter = asUserFilter(findFilterResponsibleFor(bin));
    if (!filter)
        return {StatusCode::notFound, bin.asString(), "is no bin of a filter"};
    const CriticalSection::Lock whole(filesLock_);
    return files_->write({filter});
}

std::vector<Status> ProjectFilterManager::getDamaged() const {
    std::vector<Status> damaged = files_->damaged();
    if (const Kv::Ptr<SearchResultsFilter> searches = getSearchResults())
        for (Status& status : searches->getDamaged())
            damaged.push_back(std::move(status));
    return damaged;
}
