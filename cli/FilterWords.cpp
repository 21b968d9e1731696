#include "cli/FilterWords.h"

#include "bins/BinHandle.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/ContainerText.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/store/ChangedEdits.h"

namespace cutroom::cli {

namespace {

ProjectFilterManager& filters() { return ProjectFilterManager::instance(); }

const char* creatorText(const iProjectFilter& filter) {
    return filter.getCreator() == iProjectFilter::kUser ? "user" : "system";
}

const char* resultsText(const iProjectFilter& filter) {
    switch (filter.getResultsType()) {
    case iProjectFilter::kFlatResults:
        return "flat";
    case iProjectFilter::kGroupedResults:
        return "group";
    case iProjectFilter::kSearchResults:
        return "search";
    }
    return "";
}

std::string visibilityText(const iProjectFilter& filter) {
    return iProjectFilter::visibilityToString(filter.getVisibility());
}

void addFilter(JSON::Builder& json, const iProjectFilter& filter) {
    json.add("id", filter.getID().asString());
    json.add("name", filter.getName());
    json.add("description", filter.getDescription());
    json.add("creator", creatorText(filter));
    json.add("visibility", visibilityText(filter));
    json.add("results", resultsText(filter));
}

void addBin(JSON::Builder& json, const FilterBinData& bin) {
    json.beginObject();
    json.add("id", bin.getID().asString());
    json.add("name", bin.getName());
    json.add("dynamic", bin.isDynamic());
    json.beginArray("items");
    for (const AssetReference& item : bin.getCookies()) {
        json.beginObject();
        json.add("id", item.cookie.asString());
        json.add("name", assetName(item.cookie));
        json.add("kind", kindText(item.cookie));
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

std::string binText(const FilterBinData& bin) {
    std::string text = bin.getID().asString() + "  " + oneLine(toUtf8(bin.getName())) + ", " +
                       countText(bin.numItems()) + '\n';
    for (const AssetReference& item : bin.getCookies())
        text += "  " + item.cookie.asString() + "  " + oneLine(assetName(item.cookie)) + '\n';
    return text;
}

} // namespace

Result<FilterPtr> findFilter(std::string_view text) {
    ChangedEdits::enter();
    const std::string wanted(text);
    if (const auto cookie = Cookie::fromString(text))
        if (FilterPtr filter = filters().getFilter(*cookie))
            return filter;
    std::vector<FilterPtr> named;
    for (const FilterPtr& filter : filters().getAllFilters())
        if (toUtf8(filter->getName()) == wanted)
            named.push_back(filter);
    if (named.size() == 1)
        return named.front();
    if (named.empty())
        return Status(StatusCode::notFound, wanted,
                      "there is no such filter; `cutroom filter list` names them");
    std::string candidates;
    for (const FilterPtr& filter : named)
        candidates += (candidates.empty() ? "" : ", ") + filter->getID().asString();
    return Status(StatusCode::notFound, wanted, "several filters have this name: " + candidates);
}

Result<Kv::Ptr<UserFilter>> findUserFilter(std::string_view text) {
    if (const auto cookie = Cookie::fromString(text)) // without looking for tags
        for (const Kv::Ptr<UserFilter>& filter : filters().getUserFilters())
            if (filter->getID() == *cookie)
                return filter;
    const auto filter = findFilter(text);
    if (!filter)
        return filter.status();
    if (auto* const users = dynamic_cast<UserFilter*>(filter->get()))
        return Kv::Ptr<UserFilter>(users);
    return Status(StatusCode::wrongUsage, std::string(text), "the system makes this filter");
}

Status checkFilterName(const std::wstring& name, const Cookie& besides) {
    const FilterPtr other = filters().getFilterByName(name);
    if (!other || other->getID() == besides)
        return {};
    return {StatusCode::failed, toUtf8(name),
            "there is a filter of this name: " + other->getID().asString()};
}

Status renameFilter(std::string_view text, const std::wstring& name) {
    const auto filter = findUserFilter(text);
    if (!filter)
        return filter.status();
    if (Status unique = checkFilterName(name, (*filter)->getID()); !unique)
        return unique;
    return filters().renameFilter(*filter, name)
               ? Status()
               : Status(StatusCode::failed, std::string(text), "the filter cannot be saved");
}

Status deleteFilter(const Kv::Ptr<UserFilter>& filter) {
    return filters().destroyFilter(filter) ? Status()
                                           : Status(StatusCode::failed, toUtf8(filter->getName()),
                                                    "the filter cannot be removed");
}

// Asked by listeners of containers, too, under which the manager cannot be made.
std::string filterName(const Cookie& cookie) {
    const auto* const manager = ProcessSingleton<ProjectFilterManager>::find();
    if (!manager)
        return cookie.asString();
    if (const FilterPtr filter = manager->getFilter(cookie))
        return toUtf8(filter->getName());
    const FilterPtr presents = manager->findFilterResponsibleFor(cookie);
    if (const auto* base = dynamic_cast<const ProjectFilterBase*>(presents.get()))
        for (const Kv::Ptr<FilterBinData>& bin : base->peekResults())
            if (bin->getID() == cookie)
                return toUtf8(bin->getName());
    return cookie.asString();
}

Result<Kv::Ptr<BinData>> findAnyBin(std::string_view text) {
    ChangedEdits::enter();
    if (const auto cookie = Cookie::fromString(text))
        if (Kv::Ptr<BinData> result = filters().getFilterResults(*cookie))
            return result;
    return openBin(text);
}

Result<FilterBins> filterBinsOf(const std::vector<std::string>& sources) {
    FilterBins bins;
    for (const std::string& source : sources) {
        if (const auto filter = findFilter(source)) {
            for (const Kv::Ptr<BinData>& bin : (*filter)->getBins())
                bins.push_back(Kv::makePtr<FilterBinData>(*bin));
            continue;
        }
        const auto bin = findAnyBin(source);
        if (!bin)
            return bin.status();
        bins.push_back(Kv::makePtr<FilterBinData>(**bin));
    }
    return bins;
}

Result<iProjectFilter::eVisibility> visibilityOf(const std::string& word) {
    const auto visibility = iProjectFilter::visibilityFromString(word);
    if (iProjectFilter::visibilityToString(visibility) != word)
        return Status(StatusCode::wrongUsage, word, "always, optional or never is expected");
    return visibility;
}

Result<eSetOperation> setOperationOf(const std::string& word) {
    if (word == "any")
        return kSetUnion;
    if (word == "all")
        return kSetIntersection;
    if (word == "first")
        return kSetDifference;
    return Status(StatusCode::wrongUsage, word, "any, all or first is expected");
}

std::string listFilters(bool json) {
    JSON::Builder out;
    std::vector<std::vector<std::string>> rows;
    out.beginArray();
    for (const FilterPtr& filter : filters().getAllFilters()) {
        rows.push_back({filter->getID().asString(), creatorText(*filter), visibilityText(*filter),
                        toUtf8(filter->getName())});
        out.beginObject();
        addFilter(out, *filter);
        out.endObject();
    }
    out.endArray();
    return json ? out.take() : tableText(rows);
}

std::string showFilter(const iProjectFilter& filter, bool json) {
    if (json) {
        JSON::Builder out;
        out.beginObject();
        addFilter(out, filter);
        out.beginArray("bins");
        for (const Kv::Ptr<FilterBinData>& bin : filter.getResults())
            addBin(out, *bin);
        out.endArray();
        out.endObject();
        return out.take();
    }
    std::string text = oneLine(toUtf8(filter.getName())) + ": " +
                       oneLine(toUtf8(filter.getDescription())) + "; shown " +
                       visibilityText(filter) + '\n';
    for (const Kv::Ptr<FilterBinData>& bin : filter.getResults())
        text += binText(*bin);
    return text;
}

} // namespace cutroom::cli
