#include "export/MetadataExporters.h"

#include "bins/BinManager.h"
#include "export/AssetMetadataCSVExporter.h"
#include "export/AssetMetadataJSONExporter.h"
#include "export/AssetMetadataSRTExporter.h"
#include "export/AssetMetadataSubtitlesExporter.h"
#include "export/AssetMetadataXMLExporter.h"

namespace cutroom {

void registerMetadataExporters() {
    BinManager& bins = BinManager::instance();
    bins.registerMetadataExporter(Kv::Ptr<iAssetMetadataExporter>(new AssetMetadataSRTExporter));
    bins.registerMetadataExporter(
        Kv::Ptr<iAssetMetadataExporter>(new AssetMetadataSubtitlesExporter));
    bins.registerMetadataExporter(Kv::Ptr<iAssetMetadataExporter>(new AssetMetadataJSONExporter));
    bins.registerMetadataExporter(Kv::Ptr<iAssetMetadataExporter>(new AssetMetadataXMLExporter));
    bins.registerMetadataExporter(Kv::Ptr<iAssetMetadataExporter>(new AssetMetadataCSVExporter));
}

} // namespace cutroom
