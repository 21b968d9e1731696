#include "platform/project/MediaKind.h"

#include "platform/base/Strings.h"

#include <algorithm>
#include <array>

namespace cutroom {

namespace {

// Sorted.
constexpr std::array<std::string_view, 21> kStillImages = {
    "avif", "bmp", "cin", "cr2", "dng", "dpx", "exr", "gif", "hdr",  "heic", "jp2",
    "jpeg", "jpg", "nef", "png", "psd", "svg", "tga", "tif", "tiff", "webp"};
static_assert(std::is_sorted(kStillImages.begin(), kStillImages.end()));

} // namespace

bool isStillImage(std::string_view location) {
    const std::string_view name = location.substr(location.find_last_of('/') + 1);
    const std::size_t point = name.find_last_of('.');
    if (point == std::string_view::npos || point == 0)
        return false;
    // An escaped character of a URL ("%20") must not be taken for the place of a number ("%04d").
    const std::string_view stem = name.substr(0, point);
    if (stem.find('#') != std::string_view::npos)
        return false;
    for (std::size_t at = stem.find('%'); at != std::string_view::npos;
         at = stem.find('%', at + 1)) {
        const std::size_t letter = stem.find_first_not_of("0123456789", at + 1);
        if (letter != std::string_view::npos && stem[letter] == 'd' && letter - at != 2)
            return false;
    }
    return std::binary_search(kStillImages.begin(), kStillImages.end(),
                              std::string_view(toLowerUtf8(name.substr(point + 1))));
}

} // namespace cutroom
