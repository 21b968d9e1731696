#include "cli/Assets.h"

#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "filters/ProjectFilterManager.h"
#include "platform/base/Strings.h"
#include "platform/project/ProjDb.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <set>

namespace cutroom::cli {

namespace {

const char* wordFor(unsigned kinds) {
    switch (kinds) {
    case kEdits:
        return "edit";
    case kBins:
        return "bin";
    case kGroups:
        return "group";
    case kDocuments:
        return "document";
    case kFilters:
        return "filter";
    default:
        return "asset";
    }
}

const char* logWord(eLogType type) {
    switch (type) {
    case kLogTypeSource:
    case kLogTypeFileCopy:
        return "log";
    case kLogTypeSubclip:
        return "subclip";
    case kLogTypeSyncGhost:
        return "sync";
    case kLogTypePrintGhost:
        return "print";
    case kLogTypeClipSection:
        return "clip section";
    default:
        return "edit";
    }
}

using Visit = std::function<void(const Cookie&, std::string name, AssetKinds)>;

// Names stand as they are now: an edit that is open may have another than its record, or no record
// until it is saved.
std::string editName(const Cookie& edit, const std::string& recorded) {
    if (!EditManager::instance().isOpen(edit))
        return recorded;
    const EditPtr open(edit);
    return open ? toUtf8(open->getName()) : recorded;
}

void forEachEdit(const Visit& visit) {
    projdb::forEach({"cookie", "name"}, [&](const std::vector<std::string>& fields) {
        const Cookie edit(fields[0]);
        visit(edit, editName(edit, fields[1]), kEdits);
        return true;
    });
    if (!EditManager::instance().anyDirty())
        return; // every edit has its record
    const CookieVec all = EditManager::instance().getAllEdits();
    const std::vector<bool> recorded = projdb::arePresent(all);
    for (std::size_t i = 0; i < all.size(); ++i)
        if (!recorded[i])
            visit(all[i], editName(all[i], {}), kEdits);
}

void forEachAsset(unsigned kinds, const Visit& visit) {
    if (kinds & kEdits)
        forEachEdit(visit);
    if (kinds & kBins) {
        std::map<Cookie, BinSummary> bins;
        BinManager::instance().getAllBins(bins);
        for (const auto& [cookie, summary] : bins)
            visit(cookie, toUtf8(summary.name), kBins);
    }
    if (kinds & kGroups)
        for (const auto& group : AssetAssociationGroupManager::instance().getGroups())
            visit(group->getID(), toUtf8(group->getName()), kGroups);
    if (kinds & kDocuments)
        for (const auto& document : DocumentManager::instance().getDocuments())
            visit(document->getID(), toUtf8(document->getName()), kDocuments);
    if (kinds & kFilters)
        for (const auto& filter : ProjectFilterManager::instance().getUserFilters())
            visit(filter->getID(), toUtf8(filter->getName()), kFilters);
}

// All assets whose name is `text`; failing that, whose name holds it, whatever the case.
std::vector<NamedAsset> candidatesFor(std::string_view text, unsigned kinds, bool* exact) {
    std::vector<NamedAsset> same;
    std::vector<NamedAsset> alike; // to nothing, every name would be
    const std::string lowered = toLowerUtf8(text);
    forEachAsset(kinds, [&](const Cookie& cookie, std::string name, AssetKinds kind) {
        if (name == text)
            same.push_back({cookie, std::move(name), kind});
        else if (!text.empty() && toLowerUtf8(name).find(lowered) != std::string::npos)
            alike.push_back({cookie, std::move(name), kind});
    });
    *exact = !same.empty();
    return same.empty() ? alike : same;
}

std::string listed(const std::vector<NamedAsset>& candidates, bool withKind) {
    constexpr std::size_t kMost = 8;
    std::string text;
    for (std::size_t i = 0; i < std::min(candidates.size(), kMost); ++i)
        text += (i ? ", " : "") +
                (withKind ? std::string(wordFor(candidates[i].kind)) + ' ' : std::string()) +
                candidates[i].cookie.asString() + " \"" + candidates[i].name + '"';
    if (candidates.size() > kMost)
        text += format(" and %zu more", candidates.size() - kMost);
    return text;
}

// By its cookie a bin is found even when its file cannot be read.
std::optional<NamedAsset> byCookie(const Cookie& cookie, unsigned kinds) {
    if (kinds & kEdits && EditManager::instance().exists(cookie)) {
        const auto record = projdb::find(cookie);
        return NamedAsset{cookie, editName(cookie, record ? record->name() : std::string()),
                          kEdits};
    }
    if (kinds & kBins)
        if (const BinSummary summary = BinManager::instance().getSummary(cookie); summary.valid())
            return NamedAsset{cookie, toUtf8(summary.name), kBins};
    if (kinds & kGroups)
        if (const auto group = AssetAssociationGroupManager::instance().getGroup(cookie))
            return NamedAsset{cookie, toUtf8(group->getName()), kGroups};
    if (kinds & kDocuments)
        if (const auto document = DocumentManager::instance().getDocument(cookie))
            return NamedAsset{cookie, toUtf8(document->getName()), kDocuments};
    if (kinds & kFilters)
        for (const auto& filter : ProjectFilterManager::instance().getUserFilters())
            if (filter->getID() == cookie)
                return NamedAsset{cookie, toUtf8(filter->getName()), kFilters};
    return std::nullopt;
}

} // namespace

Result<NamedAsset> findAsset(std::string_view text, unsigned kinds) {
    if (const auto cookie = Cookie::fromString(text))
        if (auto found = byCookie(*cookie, kinds))
            return std::move(*found);
    bool exact = false;
    const auto candidates = candidatesFor(text, kinds, &exact);
    if (exact && candidates.size() == 1)
        return candidates.front();
    const std::string what(text);
    const std::string word = wordFor(kinds);
    const bool mixed = (kinds & (kinds - 1)) != 0;
    if (exact)
        return Status(StatusCode::notFound, what,
                      "several have this name, give the cookie of one: " +
                          listed(candidates, mixed));
    if (!candidates.empty())
        return Status(StatusCode::notFound, what,
                      "no " + word + " has this name; near it: " + listed(candidates, mixed));
    return Status(StatusCode::notFound, what,
                  "no " + word + " has this name or cookie; `cutroom list" +
                      (kinds == kEdits || mixed ? "" : ' ' + word + 's') + "` shows what there is");
}

Result<CookieVec> findAssets(const std::vector<std::string>& texts, unsigned kinds) {
    CookieVec found;
    for (const std::string& text : texts) {
        const auto asset = findAsset(text, kinds);
        if (!asset)
            return asset.status();
        found.push_back(asset->cookie);
    }
    return found;
}

std::vector<NamedAsset> allAssets(unsigned kinds) {
    std::vector<NamedAsset> all;
    forEachAsset(kinds, [&](const Cookie& cookie, std::string name, AssetKinds kind) {
        all.push_back({cookie, std::move(name), kind});
    });
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& a, const auto& b) { return a.name < b.name; });
    return all;
}

Status checkBinName(const std::string& name, const Cookie& besides) {
    for (const NamedAsset& other : allAssets(kBins))
        if (other.name == name && other.cookie != besides)
            return {StatusCode::failed, name,
                    "there is a bin of this name: " + other.cookie.asString()};
    return {};
}

Result<Kv::Ptr<BinData>> openBin(std::string_view text) {
    const auto named = findAsset(text, kBins);
    if (!named)
        return named.status();
    Kv::Ptr<BinData> bin = BinManager::instance().getData(named->cookie);
    if (!bin)
        return Status(StatusCode::notFound, std::string(text), "the bin has no file any more");
    if (bin->valid())
        return bin;
    const Status why = BinData().load(named->cookie); // the manager's bin keeps none
    return why.ok() ? Status(StatusCode::damaged, std::string(text), "the bin cannot be read")
                    : why;
}

Result<Kv::Ptr<AssetAssociationGroup>> openGroup(std::string_view text) {
    const auto named = findAsset(text, kGroups);
    if (!named)
        return named.status();
    return AssetAssociationGroupManager::instance().getGroup(named->cookie);
}

Result<Kv::Ptr<Document>> openDocument(std::string_view text) {
    const auto named = findAsset(text, kDocuments);
    if (!named)
        return named.status();
    return DocumentManager::instance().getDocument(named->cookie);
}

const char* kindText(const Cookie& asset) {
    if (const auto record = projdb::find(asset))
        return logWord(record->logType);
    const auto known = byCookie(asset, kAnyAsset);
    return known ? wordFor(known->kind) : "asset";
}

std::string assetName(const Cookie& asset) {
    const auto known = byCookie(asset, kAnyAsset);
    return known ? known->name : asset.asString();
}

} // namespace cutroom::cli
