#include "export/AssetMetadataExporterBase.h"

#include "platform/base/Timecode.h"
#include "platform/prefs/Configuration.h"
#include "platform/store/Edit.h"

#include <array>
#include <utility>

AssetMetadataExporterBase::~AssetMetadataExporterBase() = default;

LightweightString<char> AssetMetadataExporterBase::getCueTimecode(const EditPtr& edit,
                                                                  double seconds) {
    if (!edit || !cutroom::isStorableTime(seconds))
        return {};
    if (cutroom::configInt("convert_marker_timecodes", 1) != 0)
        if (const EditLabel label = edit->getVideoTimecodeLabel(); label.is_valid())
            return label.pointAt(seconds).removePadding();
    const cutroom::TimecodeFormat format{edit->getFrameRate(), edit->getDropFrame()};
    return cutroom::timecodeText(format.rate.flicksToFrameFloor(cutroom::toFlicks(seconds)),
                                 format);
}

LightweightString<char> AssetMetadataExporterBase::getMarkerColour(const Cue& cue) {
    static constexpr std::array<std::pair<std::uint32_t, const char*>, 8> kNames{{
        {0xFF0000, "red"},
        {0x00FF00, "green"},
        {0x0000FF, "blue"},
        {0x00FFFF, "cyan"},
        {0xFF00FF, "magenta"},
        {0xFFFF00, "yellow"},
        {0xFFFFFF, "white"},
        {0x000000, "black"},
    }};
    for (const auto& [value, name] : kNames)
        if (value == cue.getColour())
            return name;
    return {};
}
