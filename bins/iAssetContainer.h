// `iAssetContainer`: something that shows or holds one asset.
#pragma once

#include "bins/AssetReference.h"
#include "platform/base/Object.h"
#include "platform/base/Strings.h"

class CUTROOM_API iAssetContainer : public virtual iVirtual {
public:
    ~iAssetContainer() override;

    // The asset; the invalid cookie when there is none.
    virtual Cookie getAssetID() const = 0;
    // The asset with the range of it that is meant.
    virtual AssetReference getAssetReference() const = 0;
    // The asset's name as shown to the user.
    virtual LightweightString<wchar_t> getAssetName() const = 0;
};
