// `iCookieContainer`: whatever holds or shows a set of assets: a bin, a document, a viewer, the
// results of a filter, a group.
#pragma once

#include "bins/AssetReference.h"
#include "bins/Glob.h"
#include "bins/iImportable.h"

// Implementations say on which thread they may be asked; viewers only on the user-interface thread.
class CUTROOM_API iCookieContainer : public virtual iImportable, public virtual iObject {
public:
    ~iCookieContainer() override;

    // The cookie of the container itself.
    virtual Cookie getContainerID() const = 0;
    // The assets held, in the container's order.
    virtual LightweightVector<AssetReference> getCookies() const = 0;
    // Its name, and the name of its kind, as shown to the user. Empty by default.
    virtual LightweightString<wchar_t> getName() const;
    virtual LightweightString<wchar_t> getTypeName() const;
    // Adds assets. By default refuses: false, and nothing changes.
    virtual bool add(const LightweightVector<AssetReference>& assets);
    // Tells whether some asset held has that kind letter. By default asks `getCookies`.
    virtual bool containsType(CookieType type) const;

    // Tells whether `glob` (may be null) is a container of cookies too.
    static bool cookieContainerCheckFn(Glob* glob);

protected:
    iCookieContainer();
    iCookieContainer(const iCookieContainer&) = default;
    iCookieContainer& operator=(const iCookieContainer&) = default;
    // Copies the assets of `container` into the bin `bin`.
    static bool importToBin(const iCookieContainer& container, const Cookie& bin);
};
