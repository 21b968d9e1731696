// `iBinDataContainer`: a view of the user interface that shows one bin.
#pragma once

#include "bins/BinData.h"
#include "bins/BinHandle.h"
#include "bins/iImportable.h"

// User-interface thread.
class CUTROOM_API iBinDataContainer : public virtual iImportable {
public:
    ~iBinDataContainer() override;

    // Names the bin that is shown; names nothing when there is none.
    virtual BinHandle getBinHandle() const = 0;
    // Shows another bin. By default refuses: false, and nothing changes.
    virtual bool setBinHandle(const BinHandle& bin);
    // The bins that are selected in the view. By default they are ignored, and there are none.
    virtual void setBinSelection(const LightweightVector<BinHandle>& bins);
    virtual LightweightVector<BinHandle> getBinSelection() const;
    // The view is the one that the user works in. By default it is not.
    virtual bool isActive() const;
    // Brings the asset into sight. Does nothing by default.
    virtual void reveal(const Cookie& asset);

    // The bin that is shown; empty when there is none.
    Kv::Ptr<BinData> getBinData() const { return getBinHandle().getBin(); }
    using iImportable::import;

protected:
    iBinDataContainer();
    iBinDataContainer(const iBinDataContainer&) = default;
    iBinDataContainer& operator=(const iBinDataContainer&) = default;
    // Copies what the shown bin holds into the bin `bin`; where both marks are set, with them.
    static bool import(const iBinDataContainer& container, const Cookie& bin);
};
