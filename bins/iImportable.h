// `iImportable`: something whose assets can be copied into a bin.
#pragma once

#include "bins/AssetReference.h"
#include "platform/base/Cookie.h"
#include "platform/base/Object.h"
#include "platform/base/Strings.h"

class CUTROOM_API iImportable : public virtual iObject {
public:
    ~iImportable() override;

    // Copies the assets into the bin `bin`, in order. False when there is no such bin, when it
    // takes none of them, or when this kind of object has no assets to give. User-interface thread.
    bool import(const Cookie& bin) const;

protected:
    // Copies the assets of `from`, which is the object itself.
    using ImportFunction = bool (*)(const iImportable& from, const Cookie& bin);

    iImportable() = default;
    iImportable(const iImportable&) = default;
    iImportable& operator=(const iImportable&) = default;
    // Called by each interface above this one when it is constructed; of several the first is used.
    void importBy(ImportFunction function) noexcept;

private:
    ImportFunction import_ = nullptr;
};

namespace cutroom {

// How references get into a bin: installed by the folder that owns the bins, since the containers'
// interfaces lie below it. False when nothing was taken. User-interface thread.
using BinImporter = bool (*)(const LightweightVector<AssetReference>& assets, const Cookie& bin);
// Installs `importer` (null: none); gives the one before.
CUTROOM_API BinImporter installBinImporter(BinImporter importer) noexcept;
// Calls the installed importer; false without one.
CUTROOM_API bool importIntoBin(const LightweightVector<AssetReference>& assets, const Cookie& bin);

} // namespace cutroom
