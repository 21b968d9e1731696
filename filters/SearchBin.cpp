#include "filters/SearchBin.h"

#include "filters/ProjectFilterManager.h"
#include "filters/SearchResultsFilter.h"
#include "platform/base/Strings.h"

#include <utility>

using cutroom::Status;
using cutroom::StatusCode;

namespace {

constexpr char kTypeID[] = "Search";
constexpr char kCriteria[] = "Criteria";
constexpr char kDynamic[] = "Dynamic";

} // namespace

SearchBin::SearchBin() = default;
SearchBin::~SearchBin() = default;

SearchBin::SearchBin(const LightweightString<wchar_t>& name,
                     const ProjectSearch::Criteria& criteria)
    : FilterBinData(name, fixedID(name)), criteria_(criteria), keptAs_(name), dynamic_(true) {}

SearchBin::SearchBin(const BinData& results, const std::optional<ProjectSearch::Criteria>& criteria)
    : FilterBinData(results), criteria_(criteria) {}

Cookie SearchBin::fixedID(const LightweightString<wchar_t>& name) noexcept {
    return cutroom::fixedFilterBinID("search : " + cutroom::toUtf8(name));
}

std::optional<ProjectSearch::Criteria> SearchBin::getCriteria() const {
    const CriticalSection::Lock lock(criteriaLock_);
    return criteria_;
}

void SearchBin::setCriteria(const ProjectSearch::Criteria& criteria) {
    {
        const CriticalSection::Lock lock(criteriaLock_);
        criteria_ = criteria;
    }
    refresh();
}

LightweightString<wchar_t> SearchBin::keptAs() const {
    const CriticalSection::Lock lock(criteriaLock_);
    return keptAs_;
}

LightweightString<char> SearchBin::getTypeID() const { return kTypeID; }

BinData::Items SearchBin::gather() const {
    Items items;
    if (const auto criteria = getCriteria())
        ProjectSearch::instance().find(*criteria, items);
    return items;
}

std::optional<BinItem> SearchBin::itemOf(const Cookie& asset) const {
    const auto criteria = getCriteria();
    return criteria ? ProjectSearch::instance().findItem(asset, *criteria) : std::nullopt;
}

// --- the form in filter files --------------------------------------------------------------------

void SearchBin::write(JSON::Builder& object) const {
    FilterBinData::write(object);
    const auto criteria = getCriteria();
    if (!criteria)
        return;
    if (isDynamic())
        object.add(kDynamic, true);
    object.beginObject(kCriteria);
    criteria->addTo(object);
    object.endObject();
}

Status SearchBin::read(const JSON::Element& object, const std::string& file) {
    std::optional<ProjectSearch::Criteria> criteria;
    if (const auto member = object.find(kCriteria)) {
        auto found = ProjectSearch::Criteria::from(*member, file);
        if (!found)
            return Status(found.status().code(), file,
                          std::string(kCriteria) + ": " + found.status().message());
        criteria = std::move(*found);
    }
    const auto dynamic = object.find(kDynamic);
    const std::optional<bool> isDynamic = dynamic ? dynamic->asBool() : false;
    if (!isDynamic || (*isDynamic && !criteria))
        return Status(StatusCode::damaged, file,
                      isDynamic ? "Dynamic: there are no criteria"
                                : "Dynamic: true or false is expected");
    if (Status status = FilterBinData::read(object, file); !status)
        return status;
    LightweightString<wchar_t> name = getName();
    const CriticalSection::Lock lock(criteriaLock_);
    criteria_ = std::move(criteria);
    keptAs_ = std::move(name);
    dynamic_ = *isDynamic;
    return {};
}

Status SearchBin::save() {
    if (isDynamic())
        return {};
    const auto filter = ProjectFilterManager::instance().findFilterResponsibleFor(getID());
    if (auto* const searches = dynamic_cast<SearchResultsFilter*>(filter.get()))
        return searches->save();
    return FilterBinData::save();
}
