#include "bins/iEditContainer.h"

iEditContainer::iEditContainer() {
    importBy([](const iImportable& from, const Cookie& bin) {
        return importToBin(dynamic_cast<const iEditContainer&>(from), bin);
    });
}

iEditContainer::~iEditContainer() = default;

bool iEditContainer::isDynamic() const { return false; }

bool iEditContainer::importToBin(const iEditContainer& container, const Cookie& bin) {
    const AssetReference asset = container.getAssetReference();
    return asset.cookie.valid() && cutroom::importIntoBin({asset}, bin);
}
