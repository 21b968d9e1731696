#include "bins/BinSummary.h"

#include "bins/BinData.h"
#include "bins/BinsCache.h"
#include "bins/DocumentManager.h"
#include "platform/base/Strings.h"
#include "platform/files/KVContainerFile.h"
#include "platform/project/ProjDb.h"

#include <algorithm>
#include <limits>
#include <unordered_set>

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

CookieVec assetsOf(const KVContainerFile::Reader& file, CookieType type) {
    CookieVec assets;
    for (std::size_t item = 0; item < file.getNumItems(); ++item) {
        const std::string_view text = file.getText(item, 0);
        if (!text.empty() && text.front() == type)
            if (const Cookie asset(text); asset.valid())
                assets.push_back(asset);
    }
    return assets;
}

// Those that a bin keeps when it is loaded.
std::int32_t countLogs(const KVContainerFile::Reader& file) {
    const std::vector<bool> edits = projdb::firstPresent(assetsOf(file, 'E'));
    auto count = std::count(edits.begin(), edits.end(), true);
    CookieVec documents = assetsOf(file, 'D');
    std::sort(documents.begin(), documents.end());
    documents.erase(std::unique(documents.begin(), documents.end()), documents.end());
    count += std::count_if(documents.begin(), documents.end(), [](const Cookie& document) {
        return DocumentManager::instance().exists(document);
    });
    return static_cast<std::int32_t>(count);
}

LightweightVector<Cookie> childrenOf(const KVContainerFile::Reader& file) {
    LightweightVector<Cookie> children;
    std::unordered_set<Cookie> taken;
    for (std::size_t item = 0; item < file.getNumItems(); ++item) {
        const std::string_view text = file.getText(item, 0);
        if (text.empty() || !isGroup(text.front()))
            continue;
        const Cookie child(text);
        if (child.valid() && taken.insert(child).second)
            children.push_back(child);
    }
    return children;
}

std::uint32_t secondsOf(const KVContainerFile::Reader& file, std::string_view name) {
    const long long seconds = file.getIntAttribute(name);
    const bool fits = seconds >= 0 && seconds <= std::numeric_limits<std::uint32_t>::max();
    return fits ? static_cast<std::uint32_t>(seconds) : 0;
}

} // namespace

Result<BinSummary> readBinSummary(const std::string& path, const Cookie& bin) {
    const KVContainerFile::Reader file(path);
    if (!file.valid())
        return file.status();
    BinSummary summary;
    summary.id = bin;
    summary.name = toWide(file.getName());
    summary.permanent = file.getPermanent();
    summary.extID = toWide(file.getAttribute("ExtID"));
    summary.modTime = secondsOf(file, "ModTime");
    summary.created = secondsOf(file, "Created");
    if (summary.created == 0)
        summary.created = summary.modTime;
    summary.logCount = countLogs(file);
    if (BinData::allowNestedBins())
        summary.children = childrenOf(file);
    return summary;
}

} // namespace cutroom
