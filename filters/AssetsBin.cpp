#include "filters/AssetsBin.h"

#include "bins/DocumentManager.h"

namespace cutroom {

void forEachOfKinds(unsigned kinds, const std::function<bool(const projdb::Summary&)>& visit) {
    projdb::SearchCriteria criteria;
    criteria.kinds = kinds | projdb::kKindImage; // or images would be excluded
    if ((kinds & projdb::kKindImage) != 0)
        criteria.kinds |= projdb::kKindClip; // which every image is
    projdb::forEachMatch(criteria, [&](const projdb::Summary& summary) {
        return (summary.kinds & kinds) == 0 || visit(summary);
    });
}

AssetsBin::AssetsBin(const LightweightString<wchar_t>& name, std::string_view key, unsigned kinds,
                     DocumentTest documents)
    : FilterBinData(name, fixedFilterBinID(key)), kinds_(kinds), documents_(documents) {}

AssetsBin::~AssetsBin() = default;

bool AssetsBin::isDynamic() const { return true; }

BinData::Items AssetsBin::gather() const {
    Items items;
    forEachOfKinds(kinds_, [&](const projdb::Summary& summary) {
        items.emplace_back(summary.cookie, summary.start);
        return true;
    });
    if (documents_)
        for (const Kv::Ptr<Document>& document : DocumentManager::instance().getDocuments())
            if (documents_(*document))
                items.emplace_back(document->getID(), 0.0);
    return items;
}

std::optional<BinItem> AssetsBin::itemOf(const Cookie& asset) const {
    if (asset.type() != 'E') {
        const auto document =
            documents_ ? DocumentManager::instance().getDocument(asset) : Kv::Ptr<Document>();
        return document && documents_(*document) ? std::optional(BinItem(asset, 0.0))
                                                 : std::nullopt;
    }
    const auto summary = projdb::findSummary(asset);
    if (!summary || (summary->kinds & kinds_) == 0 ||
        (summary->kinds & projdb::kKindClipboard) != 0)
        return std::nullopt;
    return BinItem(asset, summary->start);
}

} // namespace cutroom
