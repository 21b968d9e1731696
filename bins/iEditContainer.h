// `iEditContainer`: something that shows or holds one edit or log.
#pragma once

#include "bins/iAssetContainer.h"
#include "bins/iImportable.h"
#include "platform/base/LogType.h"

class CUTROOM_API iEditContainer : public virtual iImportable, public virtual iAssetContainer {
public:
    ~iEditContainer() override;

    // The cookie of the edit; invalid when there is none.
    Cookie getAssetID() const override = 0;
    // The kind of the edit; kLogTypeNone when there is none.
    virtual eLogType getLogType() const = 0;
    // Tells whether the contents change by themselves. By default they do not.
    virtual bool isDynamic() const;

protected:
    iEditContainer();
    iEditContainer(const iEditContainer&) = default;
    iEditContainer& operator=(const iEditContainer&) = default;
    // Copies the edit (with its range) into the bin `bin`.
    static bool importToBin(const iEditContainer& container, const Cookie& bin);
};
