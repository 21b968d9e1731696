// `eGalleryViews`: the ways in which a gallery shows a bin.
#pragma once

#include "platform/base/Strings.h"

namespace eGalleryViews {
enum eGalleryView : int { None = 0, Image = 1, Table = 2, Hybrid = 3, SplitImage = 4 };
}

// The persisted name: "Image", "Table", "Hybrid", "SplitImage"; empty for every other value.
CUTROOM_API LightweightString<char> getPersistableString(eGalleryViews::eGalleryView view);
// The view of exactly that name (case matters); None when there is none.
CUTROOM_API eGalleryViews::eGalleryView
fromPersistableString(const LightweightString<char>& name) noexcept;

// The view of new bins, a preference ("Gallery Default View"); Hybrid when it is not set or names
// no view. Any thread.
CUTROOM_API eGalleryViews::eGalleryView getDefaultGalleryView();
CUTROOM_API void setDefaultGalleryView(eGalleryViews::eGalleryView view);
