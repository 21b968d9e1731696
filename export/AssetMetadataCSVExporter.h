// `AssetMetadataCSVExporter`: a table of a bin's assets, or of the markers of an edit
// (docs/formats/metadata.md).
#pragma once

#include "export/AssetMetadataExporterBase.h"

class CUTROOM_API AssetMetadataCSVExporter : public AssetMetadataExporterBase {
public:
    // Whether texts that a spreadsheet would run as formulas get an apostrophe before them.
    enum class Cells { exact, guarded };

    explicit AssetMetadataCSVExporter(Cells cells = Cells::exact) noexcept : cells_(cells) {}
    ~AssetMetadataCSVExporter() override;

    LightweightString<wchar_t> getFormatName() override;
    LightweightString<wchar_t> getFileExtension() override;
    unsigned getSupportedSources() const override;
    // A row for each marker; a colour without a name is "#rrggbb".
    std::optional<std::string> getText(const EditPtr& edit,
                                       const std::vector<Cue>& cues) const override;
    // A row for each asset, in the order of the bin, and a column for each attribute.
    std::optional<std::string> getText(const Kv::Ptr<BinData>& bin) const override;

private:
    Cells cells_;
};
