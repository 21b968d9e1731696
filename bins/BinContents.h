// `cutroom::BinContents`: what a bin holds beside its identity, as its file says.
#pragma once

#include "bins/BinItem.h"
#include "bins/ImageSize.h"
#include "bins/eGalleryViews.h"

#include <string>
#include <vector>

namespace cutroom {

// The form of the file that a bin was read from.
enum eBinVersion : int {
    kBinVersionPixels = 0,  // tiles lie at pixels
    kBinVersionUnnamed = 1, // the file names no version
    kBinVersionCurrent = 2, // what is written
};

// A value, guarded by the bin's lock where it belongs to one. Defaults are those of a new bin, save
// for the automatic placing, which is a preference.
struct BinContents {
    using Items = std::vector<BinItem>;

    Kv::ImageSize::Presets::Preset tileSize = Kv::ImageSize::getDefaultTileSize();
    bool valid = true;      // false: the file could not be read
    bool permanent = false; // stays when the project is cleaned up
    XY<int> dimensions;     // of the gallery's panel as last used
    Items items;            // in the user's order
    eGalleryViews::eGalleryView view = eGalleryViews::Image;
    eBinVersion version = kBinVersionCurrent;
    bool autoPosition = true;  // tiles without position are placed
    std::string syncedSources; // of a sync group: its clips to each other, as text; empty: none
};

} // namespace cutroom
