// Containers and assets as words of a session's line.
#pragma once

#include "cli/Assets.h"
#include "cli/SessionWords.h"

namespace cutroom::cli {

// Each refuses the line when there is none of that name or cookie.
inline Kv::Ptr<BinData> takeBin(SessionWords& words) {
    return require(openBin(words.take("a bin")));
}
inline Kv::Ptr<AssetAssociationGroup> takeAssetGroup(SessionWords& words) {
    return require(openGroup(words.take("a group")));
}
inline Kv::Ptr<Document> takeDocument(SessionWords& words) {
    return require(openDocument(words.take("a document")));
}
inline Cookie takeAsset(SessionWords& words) {
    return require(findAsset(words.take("an asset"), kAnyAsset)).cookie;
}
// All words that are left.
inline CookieVec takeAssets(SessionWords& words) {
    CookieVec assets;
    while (!words.done())
        assets.push_back(takeAsset(words));
    return assets;
}

} // namespace cutroom::cli
