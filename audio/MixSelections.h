// The channel selection of a viewed edit and its audio mix, kept in step: a channel that is not
// selected is a muted input.
#pragma once

#include "platform/base/Export.h"

class EditModule;

// Mutes each audio channel that `module` does not select and unmutes those it does, in the mix of
// its edit. Writes nothing when the mix says so already; makes no undo step. Nothing without edit.
CUTROOM_API void updateAudioMixFromSelections(const EditModule& module);
// The other way: selects in `module` each audio channel whose input is not muted and deselects the
// others. Nothing without edit or while the edit has no valid mix.
CUTROOM_API void selectTracksFromAudioMix(EditModule& module);
