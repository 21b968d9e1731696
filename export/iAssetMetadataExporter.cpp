#include "export/iAssetMetadataExporter.h"

iAssetMetadataExporter::~iAssetMetadataExporter() = default;

bool iAssetMetadataExporter::exportToFile(const EditPtr&, const std::vector<Cue>&,
                                          const LightweightString<wchar_t>&) const {
    return false;
}

bool iAssetMetadataExporter::exportToFile(const Kv::Ptr<BinData>&,
                                          const LightweightString<wchar_t>&) const {
    return false;
}
