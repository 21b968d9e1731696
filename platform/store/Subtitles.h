// What a subtitle channel has beyond its events: the font its texts are shown in.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/Strings.h"

#include <cstdint>

// Bits of `SubtitleFont::flags`.
enum SubtitleFontFlag : unsigned { kFontBold = 1, kFontItalic = 2 };

// A font by name, size as a fraction of the picture's height, colour 24 bits with red high.
struct CUTROOM_API SubtitleFont {
    LightweightString<wchar_t> name = L"Sans";
    float size = 0.05F;
    std::uint32_t colour = 0xFFFFFF;
    unsigned flags = 0;

    friend bool operator==(const SubtitleFont&, const SubtitleFont&) = default;
};
