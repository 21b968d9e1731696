// How a person names an asset of any kind: by cookie, or by a name that is the only one.
#pragma once

#include "bins/AssetAssociationGroup.h"
#include "bins/BinData.h"
#include "bins/Document.h"
#include "platform/base/Status.h"

#include <string>
#include <string_view>
#include <vector>

namespace cutroom::cli {

// Kinds of assets (bits).
enum AssetKinds : unsigned {
    kEdits = 1, // edits and logs
    kBins = 2,
    kGroups = 4, // of associated assets
    kDocuments = 8,
    kFilters = 16, // the user's project filters: no assets, so only where asked for
    kAnyAsset = kEdits | kBins | kGroups | kDocuments,
};

struct NamedAsset {
    Cookie cookie;
    std::string name; // UTF-8
    AssetKinds kind = kEdits;
};

// The asset of one of these kinds with that cookie, or of that name when it is the only one;
// otherwise `notFound` with the candidates.
Result<NamedAsset> findAsset(std::string_view text, unsigned kinds);
// Several; the first failure.
Result<CookieVec> findAssets(const std::vector<std::string>& texts, unsigned kinds);
// All assets of these kinds, in the order of their names.
std::vector<NamedAsset> allAssets(unsigned kinds);

// Fails when another bin has the name, which then would name neither. `besides` may have it.
Status checkBinName(const std::string& name, const Cookie& besides = {});

// The container itself; fails with what is wrong with its file.
Result<Kv::Ptr<BinData>> openBin(std::string_view text);
Result<Kv::Ptr<AssetAssociationGroup>> openGroup(std::string_view text);
Result<Kv::Ptr<Document>> openDocument(std::string_view text);

// Deletes assets of any kinds, once all of them are found; the first failure ends it.
Status deleteAssets(const std::vector<std::string>& names, const std::string& reason,
                    unsigned kinds = kAnyAsset);

// "edit", "log", "subclip", "sync", "print", "clip section", "bin", "group", "document", "filter";
// "asset" for what is not there any more.
const char* kindText(const Cookie& asset);
// The asset's name; its cookie for what is not there any more.
std::string assetName(const Cookie& asset);

} // namespace cutroom::cli
