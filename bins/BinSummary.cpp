#include "bins/BinSummary.h"

#include "bins/BinData.h"
#include "bins/BinsCache.h"
#include "bins/DocumentManager.h"
#include "platform/base/Strings.h"
#include "platform/files/KVContainerFile.h"
#include "platform/project/ProjDb.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <unordered_set>
#include <utility>

namespace {

bool isGroup(CookieType type) { return type == 'G' || type == 'M'; }

} // namespace

BinSummary::BinSummary(const BinData& bin) {
    const BinData::Reading reading(bin);
    id = bin.getID();
    name = bin.getName();
    permanent = bin.getPermanent();
    extID = bin.getExternalID();
    modTime = bin.getModificationTime();
    created = bin.getCreationTime();
    for (const CookieType type : {'E', 'D'})
        if (bin.canAccomodate(type))
            logCount += static_cast<std::int32_t>(bin.numItems(type));
    if (!bin.canAccomodate('G') && !bin.canAccomodate('M'))
        return;
    for (const BinItem& item : bin.items())
        if (isGroup(item.getType()))
            children.push_back(item.getAssetID());
}

namespace cutroom {

namespace {

using Reader = KVContainerFile::Reader;

// The assets of a bin by their kinds, each list in the order of the file.
struct Assets {
    CookieVec edits, documents, groups;
};

Status readAssets(const Reader& file, Assets& assets) {
    return file.forEachItem([&](const Reader::Value* item) {
        const Cookie asset(item[0].text);
        if (asset.type() == 'E')
            assets.edits.push_back(asset);
        else if (asset.type() == 'D')
            assets.documents.push_back(asset);
        else if (isGroup(asset.type()))
            assets.groups.push_back(asset);
    });
}

// Those that a bin keeps when it is loaded.
std::int32_t countLogs(const CookieVec& edits, CookieVec documents) {
    const std::vector<bool> kept = projdb::firstPresent(edits);
    auto count = std::count(kept.begin(), kept.end(), true);
    std::sort(documents.begin(), documents.end());
    documents.erase(std::unique(documents.begin(), documents.end()), documents.end());
    count += std::count_if(documents.begin(), documents.end(), [](const Cookie& document) {
        return DocumentManager::instance().exists(document);
    });
    return static_cast<std::int32_t>(count);
}

LightweightVector<Cookie> eachOnce(const CookieVec& groups) {
    LightweightVector<Cookie> children;
    std::unordered_set<Cookie> taken;
    std::copy_if(groups.begin(), groups.end(), std::back_inserter(children),
                 [&](const Cookie& child) { return taken.insert(child).second; });
    return children;
}

std::uint32_t secondsOf(const Reader& file, std::string_view name) {
    const long long seconds = file.getIntAttribute(name);
    const bool fits = seconds >= 0 && seconds <= std::numeric_limits<std::uint32_t>::max();
    return fits ? static_cast<std::uint32_t>(seconds) : 0;
}

} // namespace

Result<BinSummary> readBinSummary(const std::string& path, const Cookie& bin) {
    const Reader file(path, Reader::Access::inOrder);
    if (!file.valid())
        return file.status();
    Assets assets;
    if (Status read = readAssets(file, assets); !read)
        return read;
    BinSummary summary;
    summary.id = bin;
    summary.name = toWide(file.getName());
    summary.permanent = file.getPermanent();
    summary.extID = toWide(file.getAttribute("ExtID"));
    summary.modTime = secondsOf(file, "ModTime");
    summary.created = secondsOf(file, "Created");
    if (summary.created == 0)
        summary.created = summary.modTime;
    summary.logCount = countLogs(assets.edits, std::move(assets.documents));
    if (BinData::allowNestedBins())
        summary.children = eachOnce(assets.groups);
    return summary;
}

} // namespace cutroom
