#include "bins/iCookieContainer.h"

#include <algorithm>

iCookieContainer::iCookieContainer() {
    importBy([](const iImportable& from, const Cookie& bin) {
        return importToBin(dynamic_cast<const iCookieContainer&>(from), bin);
    });
}

iCookieContainer::~iCookieContainer() = default;

LightweightString<wchar_t> iCookieContainer::getName() const { return {}; }

LightweightString<wchar_t> iCookieContainer::getTypeName() const { return {}; }

bool iCookieContainer::add(const LightweightVector<AssetReference>&) { return false; }

bool iCookieContainer::containsType(CookieType type) const {
    const LightweightVector<AssetReference> assets = getCookies();
    return std::any_of(assets.begin(), assets.end(),
                       [type](const AssetReference& asset) { return asset.cookie.type() == type; });
}

bool iCookieContainer::cookieContainerCheckFn(Glob* glob) {
    return dynamic_cast<iCookieContainer*>(glob) != nullptr;
}

bool iCookieContainer::importToBin(const iCookieContainer& container, const Cookie& bin) {
    return cutroom::importIntoBin(container.getCookies(), bin);
}
