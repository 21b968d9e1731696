// `AssetMetadataXMLExporter`: what the JSON exporter writes, as an XML document
// (docs/formats/metadata.md).
#pragma once

#include "export/AssetMetadataExporterBase.h"

class CUTROOM_API AssetMetadataXMLExporter : public AssetMetadataExporterBase {
public:
    ~AssetMetadataXMLExporter() override;

    LightweightString<wchar_t> getFormatName() override;
    LightweightString<wchar_t> getFileExtension() override;
    unsigned getSupportedSources() const override;
    std::optional<std::string> getText(const EditPtr& edit,
                                       const std::vector<Cue>& cues) const override;
    std::optional<std::string> getText(const Kv::Ptr<BinData>& bin) const override;
};
