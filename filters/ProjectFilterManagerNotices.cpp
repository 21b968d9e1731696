// The project's life, and what changes in it.
#include "filters/ProjectFilterManager.h"

#include "filters/DocumentFilter.h"
#include "filters/EditConstituentsFilter.h"
#include "filters/EverythingFilter.h"
#include "filters/FilterFollower.h"
#include "filters/ImageFilter.h"
#include "filters/LogsFilter.h"
#include "filters/ProjectFilterWriter.h"
#include "filters/RecentLogsFilter.h"
#include "filters/SearchResultsFilter.h"
#include "filters/SubClipsFilter.h"
#include "filters/TagFilter.h"
#include "filters/UserFilterFiles.h"
#include "platform/base/Log.h"
#include "platform/messaging/UiThread.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/Savers.h"
#include "vob/VobManager.h"

#include <algorithm>
#include <utility>

using cutroom::FieldIndex;
using cutroom::Status;
using cutroom::TagFilter;
using What = ContainerNotice::What;

namespace {

constexpr unsigned kMade = ContainerBase::kModCreated | ContainerBase::kModUncounted;
constexpr unsigned kGone = ContainerBase::kModUncounted | ContainerBase::kModItemsRemoved;
constexpr unsigned kOtherBins = kGone | ContainerBase::kModItemsAdded;

void addChange(ContainerBase::Modifications& changes, unsigned type, const Cookie& filter) {
    ContainerBase::Modification change(type);
    change.add(filter);
    changes.add(std::move(change));
}

ProjectFilterManager::Filters::iterator findFilter(ProjectFilterManager::Filters& filters,
                                                   const Cookie& id) {
    return std::find_if(filters.begin(), filters.end(),
                        [&](const auto& filter) { return filter->getID() == id; });
}

bool isUsers(const Kv::Ptr<iProjectFilter>& filter) {
    return filter->getCreator() == iProjectFilter::kUser;
}

} // namespace

// --- entry and exit ------------------------------------------------------------------------------

// Other listeners of a project's entry may be told before, and ask for filters.
void ProjectFilterManager::settle() {
    if (entered_ || !CurrentProject::isOpen() || CurrentProject::isExiting() ||
        !cutroom::isUiThread())
        return;
    entered_ = true;
    follower_->reset();
    buildSystemFilters();
    addUserFilters();
    followMachines();
    issueNotification(Kv::makePtr<ContainerNotice>(What::reset, CookieVec()));
}

void ProjectFilterManager::handleProjectEntry() { settle(); }

void ProjectFilterManager::handleProjectExit() {
    if (const Status saved = saveAll(); !saved) {
        LogBoth("filters: %s\n", saved.text().c_str());
        cutroom::Savers::noteFailure(saved);
    }
    if (const auto searches = getSearchResults()) {
        if (const Status saved = searches->save(); !saved) {
            LogBoth("search results: %s\n", saved.text().c_str());
            cutroom::Savers::noteFailure(saved);
        }
        searches->leaveProject();
    }
    subClips_.reset();
    constituents_.reset();
    Filters gone; // let go outside the locks
    Kv::Ptr<SearchResultsFilter> searches;
    {
        const Writer lock(*this);
        gone.swap(filters_);
        searches.swap(searches_);
        tags_.reset();
        tagsMade_ = false;
    }
    follower_->reset();
    files_->reset();
    entered_ = false;
    issueNotification(Kv::makePtr<ContainerNotice>(What::reset, CookieVec()));
}

void ProjectFilterManager::buildSystemFilters() {
    subClips_ = Kv::makePtr<SubClipsFilter>();
    constituents_ = Kv::makePtr<EditConstituentsFilter>();
    const auto searches = Kv::makePtr<SearchResultsFilter>();
    Filters filters = {Kv::makePtr<EverythingFilter>(),
                       Kv::makePtr<LogsFilter>(),
                       Kv::makePtr<RecentLogsFilter>(),
                       subClips_,
                       constituents_,
                       Kv::makePtr<DocumentFilter>(),
                       Kv::makePtr<ImageFilter>(),
                       searches};
    const Writer lock(*this);
    filters_ = std::move(filters);
    searches_ = searches;
    tags_ =
        std::make_shared<FieldIndex>(LogAttribute(LogAttribute::tags).getID(), &TagFilter::tagsOf);
    tagsMade_ = false;
}

void ProjectFilterManager::addUserFilters() {
    const CriticalSection::Lock whole(filesLock_);
    Filters read;
    for (const Cookie& id : getPersistedUserFilters())
        read.push_back(files_->read(id));
    const Writer lock(*this);
    filters_.insert(filters_.end(), read.begin(), read.end());
}

// The files are read before the list is locked: nobody else changes the user's filters meanwhile.
void ProjectFilterManager::reInit() {
    const CriticalSection::Lock whole(filesLock_);
    const auto listed = files_->list();
    if (!entered_ || !listed) {
        if (!listed)
            LogBoth("%s\n", listed.status().text().c_str());
        return;
    }
    std::map<Cookie, FilterPtr> known;
    for (const FilterPtr& filter : list())
        if (isUsers(filter))
            known.emplace(filter->getID(), filter);
    Filters come;
    for (const Cookie& id : *listed)
        if (known.erase(id) == 0)
            come.push_back(files_->read(id));
    ContainerBase::Modifications changes; // what is still known has no file
    const Writer lock(*this);
    std::erase_if(filters_, [&](const FilterPtr& filter) {
        const bool goes = isUsers(filter) && known.count(filter->getID()) != 0;
        if (goes)
            addChange(changes, kGone, filter->getID());
        return goes;
    });
    for (const FilterPtr& filter : come) {
        filters_.push_back(filter);
        addChange(changes, kMade, filter->getID());
    }
    if (!changes.empty())
        issueNotification(changes, Kv::Ptr<BinData>());
}

// --- tags ----------------------------------------------------------------------------------------

std::shared_ptr<FieldIndex> ProjectFilterManager::tagIndex() const {
    const SharedLock::Read lock(listLock_);
    return tags_;
}

void ProjectFilterManager::insertTagFilter(const std::string& tag) const {
    filters_.insert(std::find_if(filters_.begin(), filters_.end(), isUsers),
                    Kv::makePtr<TagFilter>(tag, tags_));
}

void ProjectFilterManager::buildTagFilters() const {
    const std::shared_ptr<FieldIndex> tags = tagIndex();
    if (!tags || tagsMade_)
        return;
    tags->prepare();
    const Writer lock(*this);
    if (tagsMade_ || tags_ != tags)
        return; // another thread was faster, or the project has gone
    for (const std::string& tag : tags->values())
        insertTagFilter(tag);
    tagsMade_ = true;
}

void ProjectFilterManager::updateTagFilters(const FieldIndex::Changes& tags) {
    const Writer lock(*this);
    if (!tagsMade_)
        return;
    ContainerBase::Modifications changes;
    for (const std::string& tag : tags.gone) {
        const Cookie id = TagFilter::idOf(tag);
        if (const auto at = findFilter(filters_, id); at != filters_.end()) {
            filters_.erase(at);
            addChange(changes, kGone, id);
        }
    }
    for (const std::string& tag : tags.came) {
        const Cookie id = TagFilter::idOf(tag);
        if (findFilter(filters_, id) != filters_.end())
            continue;
        insertTagFilter(tag);
        addChange(changes, kMade, id);
    }
    if (!changes.empty())
        issueNotification(changes, Kv::Ptr<BinData>());
}

// --- what changes in the project -----------------------------------------------------------------

template <class Function> void ProjectFilterManager::forEachResult(const Function& function) const {
    for (const FilterPtr& filter : list())
        if (const auto* base = dynamic_cast<const ProjectFilterBase*>(filter.get()))
            for (const Kv::Ptr<FilterBinData>& bin : base->peekResults())
                function(*bin);
}

// Under the change lock. The index of the tags goes first: the bins of the tags ask it.
void ProjectFilterManager::assetsChanged(const CookieVec& assets) {
    FieldIndex::Changes tags;
    if (const std::shared_ptr<FieldIndex> index = tagIndex())
        tags = index->assetsChanged(assets);
    for (const FilterPtr& filter : list())
        if (auto* base = dynamic_cast<ProjectFilterBase*>(filter.get()))
            base->assetsChanged(assets);
    if (!tags.came.empty() || !tags.gone.empty())
        updateTagFilters(tags);
}

void ProjectFilterManager::handleLogsModification(
    const std::vector<EditManager::Modification>& changes) {
    forEachResult([&](FilterBinData& bin) { bin.handleLogsModified(changes); });
    if (constituents_)
        constituents_->editsChanged(changes);
}

void ProjectFilterManager::handleLogsDeletion(const CookieVec& logs,
                                              const LightweightString<char>& reason) {
    forEachResult([&](FilterBinData& bin) { bin.handleDeletions(logs, reason); });
}

void ProjectFilterManager::handleDocumentModifications(const NotifyMsg& message) {
    const auto* notice = message.getObjectAs<ContainerNotice>();
    if (!notice)
        return;
    const CookieVec& documents = notice->subjects();
    if (notice->what() == What::destroyed)
        forEachResult(
            [&](FilterBinData& bin) { bin.handleDeletions(documents, notice->reason()); });
    else if (notice->what() == What::reset)
        forEachResult([](FilterBinData& bin) { bin.refresh(); });
    else if (notice->what() == What::changed)
        forEachResult([&](FilterBinData& bin) {
            if (!notice->created())
                bin.handleDocumentsModified(documents);
            bin.assetsChanged(documents);
        });
}

// The edits that are being worked on: those of the record and the source machine.
void ProjectFilterManager::followMachines() {
    if (!subClips_)
        return;
    CookieVec edits;
    const VobManager& vobs = VobManager::instance();
    for (const Kv::Ptr<Vob>& vob : {vobs.getRecordMachine(), vobs.getSourceMachine()})
        if (vob && vob->getCookie().valid() &&
            std::find(edits.begin(), edits.end(), vob->getCookie()) == edits.end())
            edits.push_back(vob->getCookie());
    ContainerBase::Modifications changes;
    if (subClips_->setEdits(edits))
        addChange(changes, kOtherBins, subClips_->getID());
    if (constituents_->setEdit(edits.empty() ? Cookie() : edits.front()))
        addChange(changes, kOtherBins, constituents_->getID());
    const Writer lock(*this);
    if (!changes.empty())
        issueNotification(changes, Kv::Ptr<BinData>());
}
