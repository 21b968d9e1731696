#include "bins/CachedCookieContainer.h"

CachedCookieContainer::~CachedCookieContainer() = default;

CachedCookieContainer& CachedCookieContainer::operator=(const iCookieContainer& from) {
    take(from);
    return *this;
}

void CachedCookieContainer::take(const iCookieContainer& from) {
    cookies_ = from.getCookies();
    name_ = from.getName();
    typeName_ = from.getTypeName();
}
