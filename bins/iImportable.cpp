#include "bins/iImportable.h"

#include <atomic>

namespace {

std::atomic<cutroom::BinImporter> binImporter{nullptr};

} // namespace

iImportable::~iImportable() = default;

bool iImportable::import(const Cookie& bin) const {
    return bin.valid() && import_ && import_(*this, bin);
}

void iImportable::importBy(ImportFunction function) noexcept {
    if (!import_)
        import_ = function;
}

namespace cutroom {

BinImporter installBinImporter(BinImporter importer) noexcept {
    return binImporter.exchange(importer);
}

bool importIntoBin(const LightweightVector<AssetReference>& assets, const Cookie& bin) {
    const BinImporter importer = binImporter.load();
    return importer && !assets.empty() && importer(assets, bin);
}

} // namespace cutroom
