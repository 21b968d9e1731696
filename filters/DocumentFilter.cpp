#include "filters/DocumentFilter.h"

#include "bins/DocumentManager.h"
#include "filters/DocumentBin.h"
#include "platform/host/StringTable.h"

// --- the bin -------------------------------------------------------------------------------------

DocumentBin::DocumentBin()
    : FilterBinData(resourceStrW(cutroom::kResFilterDocuments), DocumentFilter::getBinID()) {}

DocumentBin::~DocumentBin() = default;

LightweightString<char> DocumentBin::getTypeID() const { return "Documents"; }
bool DocumentBin::isDynamic() const { return true; }

cutroom::Status DocumentBin::read(const JSON::Element& object, const std::string& file) {
    return readIdentity(object, file);
}

BinData::Items DocumentBin::gather() const {
    Items items;
    for (const Kv::Ptr<Document>& document : DocumentManager::instance().getDocuments())
        items.emplace_back(document->getID(), 0.0);
    return items;
}

std::optional<BinItem> DocumentBin::itemOf(const Cookie& asset) const {
    return DocumentManager::instance().exists(asset) ? std::optional(BinItem(asset, 0.0))
                                                     : std::nullopt;
}

// --- the filter ----------------------------------------------------------------------------------

DocumentFilter::DocumentFilter() : SystemFilter("documents", cutroom::kResFilterDocuments) {
    appendResult(Kv::makePtr<DocumentBin>());
}

DocumentFilter::~DocumentFilter() = default;

Cookie DocumentFilter::getBinID() noexcept { return cutroom::fixedFilterBinID("documents"); }

bool DocumentFilter::isEmpty() const {
    const DocumentManager& documents = DocumentManager::instance();
    return documents.getNumDocuments('D') + documents.getNumDocuments('A') == 0;
}

iProjectFilter::eVisibility DocumentFilter::getDefaultVisibility() const { return kOptional; }
