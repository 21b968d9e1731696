// What all exporters share: how places and colours are written.
#pragma once

#include "export/iAssetMetadataExporter.h"

class CUTROOM_API AssetMetadataExporterBase : public iAssetMetadataExporter {
public:
    ~AssetMetadataExporterBase() override;

    // The timecode of `seconds` in the edit. By the edit's video timecode label, without padding;
    // counted from zero when it has none or the configuration value "convert_marker_timecodes"
    // (default 1) is 0. Empty without edit and for a time that is no time.
    static LightweightString<char> getCueTimecode(const EditPtr& edit, double seconds);
    // The name of the cue's colour: "red", "green", "blue", "cyan", "magenta", "yellow", "white",
    // "black"; empty for any other.
    static LightweightString<char> getMarkerColour(const Cue& cue);
};
