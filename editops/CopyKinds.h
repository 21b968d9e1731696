// What turns a fresh copy into the kind of copy it is to be: sync ghost, print ghost, subclip, clip
// section.
//
// Each works on the edit that `copy` holds, in place and without an undo step; without an edit it
// does nothing. A name is applied as by `edit_modify_name`, an empty one leaves the name. Any
// thread; the changes are told with those of the modifier.
#pragma once

#include "platform/base/Strings.h"
#include "platform/store/EditPtr.h"

// The values of the configuration key "IS_DUPE" (`cutroom::kCopyKindKey`). They are persisted.
enum eCopyKind : int {
    kCopyFlattened = 0,
    kCopySyncGhost = 1,
    kCopyPrintGhost = 2,
    kCopySubclip = 3,
    kCopyClipSection = 4,
};

namespace cutroom {

// The configuration keys of copies of a kind, and of all logs that were made of something.
inline constexpr char kCopyKindKey[] = "IS_DUPE";
inline constexpr char kParentKey[] = "parent"; // the cookie of what it was made from

} // namespace cutroom

// Keeps the link to the material; what was rendered of the edit is forgotten.
CUTROOM_API void edcopy_make_clipsection(EditModifier& copy);
// The same; the copy's picture reel becomes its own cookie's text.
CUTROOM_API void edcopy_make_print_ghost(EditModifier& copy,
                                         const LightweightString<wchar_t>& name);
// The same as a clip section's; derived picture channels are removed.
CUTROOM_API void edcopy_make_subclip(EditModifier& copy, const LightweightString<wchar_t>& name);
// As a subclip; with `keepLabels` its labels count as those of its material.
CUTROOM_API void edcopy_make_sync_ghost(EditModifier& copy, const LightweightString<wchar_t>& name,
                                        bool keepLabels);
