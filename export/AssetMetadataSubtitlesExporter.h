// `AssetMetadataSubtitlesExporter`: the markers of an edit as a plain list of subtitles
// (docs/formats/metadata.md).
#pragma once

#include "export/AssetMetadataExporterBase.h"

class CUTROOM_API AssetMetadataSubtitlesExporter : public AssetMetadataExporterBase {
public:
    ~AssetMetadataSubtitlesExporter() override;

    LightweightString<wchar_t> getFormatName() override;
    LightweightString<wchar_t> getFileExtension() override;
    unsigned getSupportedSources() const override;
    // Each marker that has an end, between "<begin subtitles>" and "<end subtitles>": its two
    // timecodes, its description (else its name) as one line, an empty line.
    using AssetMetadataExporterBase::getText;
    std::optional<std::string> getText(const EditPtr& edit,
                                       const std::vector<Cue>& cues) const override;
};
