#include "filters/EverythingFilter.h"

#include "filters/AssetsBin.h"

EverythingFilter::EverythingFilter() : SystemFilter("everything", cutroom::kResFilterEverything) {
    constexpr unsigned kAll = projdb::kKindSequence | projdb::kKindsShot | projdb::kKindImage;
    appendResult(Kv::makePtr<cutroom::AssetsBin>(getName(), "everything", kAll,
                                                 [](const Document&) { return true; }));
}

EverythingFilter::~EverythingFilter() = default;
