#include "bins/iBinDataContainer.h"

#include "bins/BinManager.h"

iBinDataContainer::iBinDataContainer() {
    importBy([](const iImportable& from, const Cookie& bin) {
        return import(dynamic_cast<const iBinDataContainer&>(from), bin);
    });
}

iBinDataContainer::~iBinDataContainer() = default;

bool iBinDataContainer::setBinHandle(const BinHandle&) { return false; }

void iBinDataContainer::setBinSelection(const LightweightVector<BinHandle>&) {}

LightweightVector<BinHandle> iBinDataContainer::getBinSelection() const { return {}; }

bool iBinDataContainer::isActive() const { return false; }

void iBinDataContainer::reveal(const Cookie&) {}

bool iBinDataContainer::import(const iBinDataContainer& container, const Cookie& bin) {
    const Kv::Ptr<BinData> shown = container.getBinData();
    return shown && cutroom::importIntoBin(shown->getCookies(), bin);
}
