// `Kv::ImageSize`: the sizes in which galleries show tiles.
#pragma once

#include "platform/base/Strings.h"
#include "platform/base/XY.h"

namespace Kv::ImageSize {

namespace Presets {
// The numbers are told to viewers; the names are persisted.
enum Preset : int { None = 0, Small = 1, Normal = 2, Large = 3, Huge = 4 };
} // namespace Presets

// What a new bin shows: Normal.
CUTROOM_API Presets::Preset getDefaultTileSize() noexcept;
// Width and height of the picture in pixels; (0, 0) for None.
CUTROOM_API XY<int> getDimensions(Presets::Preset preset) noexcept;
// The persisted name: the dimensions, "192x108"; empty for None.
CUTROOM_API LightweightString<char> getPersistableString(Presets::Preset preset);
// The preset of that name (case matters); None when there is none.
CUTROOM_API Presets::Preset
getPresetFromPersistableString(const LightweightString<char>& name) noexcept;

} // namespace Kv::ImageSize
