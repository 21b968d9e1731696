#include "bins/ImageSize.h"

#include <iterator>

namespace Kv::ImageSize {

namespace {

struct Row {
    Presets::Preset preset;
    XY<int> size;
};
constexpr Row kRows[] = {{Presets::Small, {128, 72}},
                         {Presets::Normal, {192, 108}},
                         {Presets::Large, {256, 144}},
                         {Presets::Huge, {384, 216}}};

} // namespace

Presets::Preset getDefaultTileSize() noexcept { return Presets::Normal; }

XY<int> getDimensions(Presets::Preset preset) noexcept {
    for (const Row& row : kRows)
        if (row.preset == preset)
            return row.size;
    return {};
}

LightweightString<char> getPersistableString(Presets::Preset preset) {
    const XY<int> size = getDimensions(preset);
    return size.x == 0 ? LightweightString<char>() : cutroom::format("%dx%d", size.x, size.y);
}

Presets::Preset getPresetFromPersistableString(const LightweightString<char>& name) noexcept {
    for (const Row& row : kRows)
        if (getPersistableString(row.preset) == name)
            return row.preset;
    return Presets::None;
}

} // namespace Kv::ImageSize
